#pragma once

#include "ServerItemDelegate.h"

// Rows of the double-hop tree: group rows with their server count and an expand mark, and
// server rows set in under their group.
class ServerTreeItemDelegate : public ServerItemDelegate
{
    Q_OBJECT

public:
    using ServerItemDelegate::ServerItemDelegate;

protected:
    bool paintOtherRow(QPainter* painter,
                       const QStyleOptionViewItem& option,
                       const QModelIndex& index,
                       const ServerInfo& record) const override;
    int contentIndent(const QModelIndex& index) const override;
};
