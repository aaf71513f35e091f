#include "FavoriteServerItemDelegate.h"

#include <QIcon>
#include <QPainter>

#include "FavoritesServerModel.h"

namespace {

const QColor HeaderBackground(0xf6, 0xf7, 0xf8);
const QColor HeaderText(0x7d, 0x87, 0x90);
const int IconSize = 14;

} // namespace

bool FavoriteServerItemDelegate::isServer(const ServerInfo& record) const
{
    return ServerItemDelegate::isServer(record) && record.name != FavoritesServerModel::favoriteHeaderName
        && record.name != FavoritesServerModel::recommendedHeaderName;
}

bool FavoriteServerItemDelegate::paintOtherRow(QPainter* painter,
                                               const QStyleOptionViewItem& option,
                                               const QModelIndex& index,
                                               const ServerInfo& record) const
{
    const bool favorites = record.name == FavoritesServerModel::favoriteHeaderName;
    if (!favorites && record.name != FavoritesServerModel::recommendedHeaderName)
        return false;
    const QRect cell = option.rect;
    painter->fillRect(cell, HeaderBackground);
    if (index.column() == 0) {
        const QIcon icon(favorites ? QStringLiteral(":/resources/star-empty-black.svg")
                                   : QStringLiteral(":/resources/recommended-black.svg"));
        const QRect iconPlace(cell.left() + 15, cell.center().y() - IconSize / 2, IconSize, IconSize);
        painter->setOpacity(0.55);
        icon.paint(painter, visualRect(option, iconPlace));
        painter->setOpacity(1.0);
        painter->setFont(font(12, true));
        painter->setPen(HeaderText);
        const QString title = favorites ? tr("Favorite") : tr("Recommended");
        const QRect titlePlace = cell.adjusted(iconPlace.right() - cell.left() + 12, 0, 0, 0);
        painter->drawText(
            visualRect(option, titlePlace), visualAlignment(option, Qt::AlignVCenter | Qt::AlignLeft), title.toUpper());
    }
    return true;
}
