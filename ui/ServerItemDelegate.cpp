#include "ServerItemDelegate.h"

#include <QAbstractItemView>
#include <QAbstractProxyModel>
#include <QHelpEvent>
#include <QIcon>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

#include "AbstractServerModel.h"
#include "FlagPicture.h"

namespace {

const QColor TextColor(0x33, 0x3a, 0x40);
const QColor MutedColor(0x9a, 0xa3, 0xab);
const QColor HoverColor(0xf1, 0xf7, 0xfb);
const QColor SeparatorColor(0xee, 0xf0, 0xf2);
const int FlagGap = 12;
const int SideMargin = 14;

} // namespace

ServerItemDelegate::ServerItemDelegate(QObject* parent)
    : QStyledItemDelegate(parent)
{ }

ServerInfo ServerItemDelegate::recordOf(const QModelIndex& index)
{
    QModelIndex source = index;
    while (const auto* proxy = qobject_cast<const QAbstractProxyModel*>(source.model()))
        source = proxy->mapToSource(source);
    if (const auto* model = qobject_cast<const AbstractServerModel*>(source.model()))
        return model->locationByIndex(source);
    return ServerInfo();
}

QString ServerItemDelegate::latencyText(int ping)
{
    return ping > 0 ? tr("%1 ms").arg(ping) : QStringLiteral("\u2014");
}

QRect ServerItemDelegate::visualRect(const QStyleOptionViewItem& option, const QRect& logical)
{
    return QStyle::visualRect(option.direction, option.rect, logical);
}

Qt::Alignment ServerItemDelegate::visualAlignment(const QStyleOptionViewItem& option, Qt::Alignment logical)
{
    return QStyle::visualAlignment(option.direction, logical);
}

QRect ServerItemDelegate::latencyRect(const QStyleOptionViewItem& option, const QString& text)
{
    const QRect& cell = option.rect;
    const int width = QFontMetrics(font(12)).horizontalAdvance(text);
    return visualRect(option, QRect(cell.right() - width - 4, cell.top(), width, cell.height()));
}

bool ServerItemDelegate::helpEvent(QHelpEvent* event,
                                   QAbstractItemView* view,
                                   const QStyleOptionViewItem& option,
                                   const QModelIndex& index)
{
    if (event && event->type() == QEvent::ToolTip && index.column() == 0) {
        const ServerInfo record = recordOf(index);
        if (isServer(record) && record.ping <= 0
            && latencyRect(option, latencyText(record.ping)).contains(event->pos())) {
            QToolTip::showText(
                event->globalPos(), tr("Latency unknown: not measured yet, or the server did not answer"), view);
            return true;
        }
    }
    return QStyledItemDelegate::helpEvent(event, view, option, index);
}

QRect ServerItemDelegate::starRect(const QRect& cell)
{
    QRect star(0, 0, StarSize, StarSize);
    star.moveCenter(cell.center());
    return star;
}

QFont ServerItemDelegate::font(int pixelSize, bool bold)
{
    QFont f(QStringLiteral("Arial"));
    f.setPixelSize(pixelSize);
    f.setBold(bold);
    return f;
}

QSize ServerItemDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    return QSize(QStyledItemDelegate::sizeHint(option, index).width(), RowHeight);
}

bool ServerItemDelegate::isServer(const ServerInfo& record) const
{
    return !record.name.isEmpty();
}

int ServerItemDelegate::contentIndent(const QModelIndex&) const
{
    return SideMargin;
}

bool ServerItemDelegate::paintOtherRow(QPainter*,
                                       const QStyleOptionViewItem&,
                                       const QModelIndex&,
                                       const ServerInfo&) const
{
    return false;
}

void ServerItemDelegate::paintBackground(QPainter* painter, const QStyleOptionViewItem& option, const QColor& base)
{
    const bool hovered = option.state & QStyle::State_MouseOver;
    painter->fillRect(option.rect, hovered ? HoverColor : base);
}

void ServerItemDelegate::paintSeparator(QPainter* painter, const QRect& rect)
{
    painter->setPen(SeparatorColor);
    painter->drawLine(rect.bottomLeft(), rect.bottomRight());
}

void ServerItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const ServerInfo record = recordOf(index);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->setLayoutDirection(option.direction);
    if (!paintOtherRow(painter, option, index, record)) {
        paintBackground(painter, option, Qt::white);
        if (index.column() == 0)
            paintServerCell(painter, option, index, record);
        else if (isServer(record))
            paintStar(painter, option, record.favorite);
        paintSeparator(painter, option.rect);
    }
    painter->restore();
}

void ServerItemDelegate::paintServerCell(QPainter* painter,
                                         const QStyleOptionViewItem& option,
                                         const QModelIndex& index,
                                         const ServerInfo& record) const
{
    // Places are worked out left to right, then mirrored for right-to-left rows.
    const QRect cell = option.rect;
    const QRect flagPlace(cell.left() + contentIndent(index),
                          cell.center().y() - FlagPicture::Height / 2,
                          FlagPicture::Width,
                          FlagPicture::Height);
    painter->drawPixmap(visualRect(option, flagPlace), FlagPicture::pixmap(record.flag));

    const QString latency = latencyText(record.ping);
    const QRect latencyArea = latencyRect(option, latency);
    painter->setFont(font(12));
    painter->setPen(MutedColor);
    painter->drawText(latencyArea, visualAlignment(option, Qt::AlignVCenter | Qt::AlignRight), latency);

    painter->setFont(font(14));
    painter->setPen(TextColor);
    const int nameLeft = flagPlace.right() + FlagGap;
    // Mirroring the latency's place again gives back its left-to-right one.
    const int nameRight = visualRect(option, latencyArea).left() - 10;
    const QRect nameRect = visualRect(option, QRect(nameLeft, cell.top(), nameRight - nameLeft, cell.height()));
    const QString name = painter->fontMetrics().elidedText(record.name, Qt::ElideRight, nameRect.width());
    painter->drawText(nameRect, visualAlignment(option, Qt::AlignVCenter | Qt::AlignLeft), name);
}

void ServerItemDelegate::paintStar(QPainter* painter, const QStyleOptionViewItem& option, bool favorite) const
{
    const QRect star = starRect(option.rect);
    const bool hovered = option.state & QStyle::State_MouseOver;
    static const QIcon full(QStringLiteral(":/resources/star-full.svg"));
    static const QIcon empty(QStringLiteral(":/resources/star-empty-black.svg"));
    if (!favorite)
        painter->setOpacity(hovered ? 0.75 : 0.3);
    (favorite ? full : empty).paint(painter, star);
    painter->setOpacity(1.0);
}

bool ServerItemDelegate::editorEvent(QEvent* event,
                                     QAbstractItemModel* model,
                                     const QStyleOptionViewItem& option,
                                     const QModelIndex& index)
{
    if (index.column() != 1 || event->type() != QEvent::MouseButtonRelease)
        return QStyledItemDelegate::editorEvent(event, model, option, index);
    const auto* mouse = static_cast<QMouseEvent*>(event);
    // The whole star cell counts, so that the star is easy to hit.
    if (mouse->button() != Qt::LeftButton || !option.rect.contains(mouse->pos()))
        return false;
    const ServerInfo record = recordOf(index);
    if (!isServer(record))
        return false;
    return model->setData(index, !index.data(Qt::DisplayRole).toBool(), Qt::EditRole);
}
