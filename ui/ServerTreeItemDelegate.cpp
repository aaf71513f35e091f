#include "ServerTreeItemDelegate.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QPainterPath>
#include <QTreeView>

#include "AbstractServerModel.h"
#include "FlagPicture.h"

namespace {

const QColor GroupColor(0x33, 0x3a, 0x40);
const QColor CountColor(0x9a, 0xa3, 0xab);
const QColor MarkColor(0x7d, 0x87, 0x90);
const int GroupMargin = 14;
const int MemberIndent = 34;

} // namespace

int ServerTreeItemDelegate::contentIndent(const QModelIndex& index) const
{
    return index.parent().isValid() ? MemberIndent : GroupMargin;
}

bool ServerTreeItemDelegate::paintOtherRow(QPainter* painter,
                                           const QStyleOptionViewItem& option,
                                           const QModelIndex& index,
                                           const ServerInfo& record) const
{
    if (!record.name.isEmpty() || index.parent().isValid())
        return false;
    paintBackground(painter, option, Qt::white);
    const auto* tree = qobject_cast<const QTreeView*>(option.widget);
    const QModelIndex first = index.sibling(index.row(), 0);
    const bool expanded = tree && tree->isExpanded(first);
    const int members = index.model()->rowCount(first);
    const QRect cell = option.rect;

    if (index.column() == 0) {
        const QString flag = first.data(AbstractServerModel::FlagRole).toString();
        const QRect flagPlace(cell.left() + GroupMargin,
                              cell.center().y() - FlagPicture::Height / 2,
                              FlagPicture::Width,
                              FlagPicture::Height);
        painter->drawPixmap(visualRect(option, flagPlace), FlagPicture::pixmap(flag));
        painter->setFont(font(14, true));
        painter->setPen(GroupColor);
        const QRect namePlace(flagPlace.right() + 12, cell.top(), cell.right() - flagPlace.right() - 60, cell.height());
        const QRect nameRect = visualRect(option, namePlace);
        painter->drawText(
            nameRect,
            visualAlignment(option, Qt::AlignVCenter | Qt::AlignLeft),
            painter->fontMetrics().elidedText(record.groupName.trimmed(), Qt::ElideRight, nameRect.width()));
        painter->setFont(font(12));
        painter->setPen(CountColor);
        painter->drawText(visualRect(option, cell.adjusted(0, 0, -4, 0)),
                          visualAlignment(option, Qt::AlignVCenter | Qt::AlignRight),
                          QString::number(members));
    } else {
        // A chevron pointing down when open, and along the reading direction when closed: right, or
        // left in right-to-left rows.
        const QPointF c = QRectF(cell).center();
        const qreal x = option.direction == Qt::RightToLeft ? -1 : 1;
        QPainterPath mark;
        if (expanded) {
            mark.moveTo(c.x() - 5, c.y() - 2.5);
            mark.lineTo(c.x(), c.y() + 2.5);
            mark.lineTo(c.x() + 5, c.y() - 2.5);
        } else {
            mark.moveTo(c.x() - 2.5 * x, c.y() - 5);
            mark.lineTo(c.x() + 2.5 * x, c.y());
            mark.lineTo(c.x() - 2.5 * x, c.y() + 5);
        }
        painter->setPen(QPen(MarkColor, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->setBrush(Qt::NoBrush);
        painter->drawPath(mark);
    }
    paintSeparator(painter, cell);
    return true;
}
