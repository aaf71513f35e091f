#include "PingSortFilterProxyModel.h"

#include "AbstractServerModel.h"
#include "ServerPingModel.h"

bool PingSortFilterProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    const QAbstractItemModel* model = sourceModel();
    const QModelIndex nameIndex = model->index(sourceRow, 0, sourceParent);
    if (favoriteMode && !doubleMode)
        return model->index(sourceRow, AbstractServerModel::FavoriteColumn, sourceParent).data().toBool();

    const int type = nameIndex.data(AbstractServerModel::TypeRole).toInt();
    if (!favoriteMode)
        return type == (doubleMode ? ServerInfo::Double : ServerInfo::Standart);
    if (type != ServerInfo::Standart && type != ServerInfo::Double)
        return false;
    return nameContainsSearch(nameIndex);
}

void PingSortFilterProxyModel::setSourceModel(QAbstractItemModel* model)
{
    m_flat = qobject_cast<const ServerPingModel*>(model);
    ViewFilterModel::setSourceModel(model);
}

bool PingSortFilterProxyModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    if (sortColumn() != 0)
        return true;
    // The flat table knows each row's place in name order, worked out once per list: a sort compares two numbers
    // rather than two names, and a view switch sorts ten thousand rows.
    const QVector<int>* rank = m_flat ? &m_flat->nameRanks() : nullptr;
    if (rank && left.row() < rank->size() && right.row() < rank->size())
        return rank->at(left.row()) < rank->at(right.row());
    // No flat table behind the proxy: its order is kept.
    return left.row() < right.row();
}
