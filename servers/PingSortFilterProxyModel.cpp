#include "PingSortFilterProxyModel.h"

#include <algorithm>

#include "AbstractServerModel.h"

namespace {
const QChar hyphen = QLatin1Char('-');

// Names without a hyphen come first; within each kind, plain order of the lower-cased names.
bool hasHyphen(const QString& name)
{
    // Inline scan: this runs twice per comparison, and names are short.
    return std::find(name.begin(), name.end(), hyphen) != name.end();
}

bool namesInOrder(const QString& left, const QString& right)
{
    const bool leftHyphen = hasHyphen(left);
    const bool rightHyphen = hasHyphen(right);
    if (leftHyphen != rightHyphen)
        return rightHyphen;
    return left < right;
}
} // namespace

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

bool PingSortFilterProxyModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    if (sortColumn() != 0)
        return true;
    if (const AbstractServerModel* model = serverModel())
        return namesInOrder(model->sortText(left), model->sortText(right));
    return namesInOrder(lowerName(left), lowerName(right));
}
