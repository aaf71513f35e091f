#pragma once

#include <QPointer>

#include "ViewFilterModel.h"

class ServerTreeModel;

// Filters the server tree by kind, favourite mark or search text and orders each level by
// name, ignoring case. A group row shows when at least one of its servers is accepted.
class TreePingSortFilterProxyModel : public ViewFilterModel
{
    Q_OBJECT

public:
    using ViewFilterModel::ViewFilterModel;

    void setSourceModel(QAbstractItemModel* model) override;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    bool acceptsOwnRow(int sourceRow, const QModelIndex& sourceParent) const;
    bool hasAcceptedDescendant(const QModelIndex& sourceIndex) const;

    // The source when it is the server tree, which knows each row's place among its siblings.
    QPointer<const ServerTreeModel> m_tree;
};
