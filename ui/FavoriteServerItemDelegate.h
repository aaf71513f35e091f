#pragma once

#include "ServerItemDelegate.h"

// Rows of the favourites list: the "Favorite" and "Recommended" section titles, and servers.
class FavoriteServerItemDelegate : public ServerItemDelegate
{
    Q_OBJECT

public:
    using ServerItemDelegate::ServerItemDelegate;

protected:
    bool paintOtherRow(QPainter* painter,
                       const QStyleOptionViewItem& option,
                       const QModelIndex& index,
                       const ServerInfo& record) const override;
    bool isServer(const ServerInfo& record) const override;
};
