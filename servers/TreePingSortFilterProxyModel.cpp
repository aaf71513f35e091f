#include "TreePingSortFilterProxyModel.h"

#include "AbstractServerModel.h"
#include "ServerTreeModel.h"

void TreePingSortFilterProxyModel::setSourceModel(QAbstractItemModel* model)
{
    m_tree = qobject_cast<const ServerTreeModel*>(model);
    ViewFilterModel::setSourceModel(model);
}

bool TreePingSortFilterProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    if (!sourceParent.isValid())
        return hasAcceptedDescendant(sourceModel()->index(sourceRow, 0, sourceParent));
    return acceptsOwnRow(sourceRow, sourceParent);
}

bool TreePingSortFilterProxyModel::hasAcceptedDescendant(const QModelIndex& sourceIndex) const
{
    if (!sourceIndex.isValid())
        return false;
    const QAbstractItemModel* model = sourceModel();
    const int children = model->rowCount(sourceIndex);
    for (int row = 0; row < children; ++row) {
        if (acceptsOwnRow(row, sourceIndex) || hasAcceptedDescendant(model->index(row, 0, sourceIndex)))
            return true;
    }
    return false;
}

bool TreePingSortFilterProxyModel::acceptsOwnRow(int sourceRow, const QModelIndex& sourceParent) const
{
    const bool base = QSortFilterProxyModel::filterAcceptsRow(sourceRow, sourceParent);
    if (!sourceParent.isValid())
        return base;

    const QAbstractItemModel* model = sourceModel();
    const QModelIndex nameIndex = model->index(sourceRow, 0, sourceParent);
    const int type = nameIndex.data(AbstractServerModel::TypeRole).toInt();
    if (!favoriteMode && !doubleMode)
        return base && type == ServerInfo::Standart;
    if (!favoriteMode)
        return type == ServerInfo::Double;
    if (!doubleMode)
        return base && model->index(sourceRow, AbstractServerModel::FavoriteColumn, sourceParent).data().toBool();
    if (!base && type != ServerInfo::Standart && type != ServerInfo::Double)
        return false;
    return nameContainsSearch(nameIndex);
}

bool TreePingSortFilterProxyModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    if (sortColumn() != 0)
        return true;
    if (m_tree)
        return m_tree->sortRank(left) < m_tree->sortRank(right);
    if (const AbstractServerModel* model = serverModel())
        return model->sortText(left) < model->sortText(right);
    return lowerName(left) < lowerName(right);
}
