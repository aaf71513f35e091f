#include "AbstractFilterModel.h"

#include "AbstractServerModel.h"

void AbstractFilterModel::setSourceModel(QAbstractItemModel* model)
{
    m_serverModel = qobject_cast<AbstractServerModel*>(model);
    QSortFilterProxyModel::setSourceModel(model);
}

QString AbstractFilterModel::lowerName(const QModelIndex& sourceIndex)
{
    return sourceIndex.data().toString().toLower();
}
