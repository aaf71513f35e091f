#include "PingSortFilterProxyModel.h"

#include <algorithm>
#include <numeric>

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

void PingSortFilterProxyModel::setSourceModel(QAbstractItemModel* model)
{
    m_ranks.clear();
    ViewFilterModel::setSourceModel(model);
    if (!model)
        return;
    // Before the source changes, so that the proxy's own sort afterwards works the ranks out anew.
    const auto forget = [this] {
        m_ranks.clear();
    };
    connect(model, &QAbstractItemModel::modelAboutToBeReset, this, forget);
    connect(model, &QAbstractItemModel::rowsAboutToBeInserted, this, forget);
    connect(model, &QAbstractItemModel::rowsAboutToBeRemoved, this, forget);
    connect(model, &QAbstractItemModel::rowsAboutToBeMoved, this, forget);
    connect(model, &QAbstractItemModel::layoutAboutToBeChanged, this, forget);
}

const QVector<int>& PingSortFilterProxyModel::ranks(const AbstractServerModel* model) const
{
    if (!m_ranks.isEmpty())
        return m_ranks;
    const int rows = model->rowCount();
    QVector<const QString*> names(rows);
    for (int row = 0; row < rows; ++row)
        names[row] = &model->sortText(model->index(row, 0));
    QVector<int> order(rows);
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&names](int a, int b) { return namesInOrder(*names[a], *names[b]); });
    m_ranks.resize(rows);
    for (int place = 0; place < rows; ++place)
        m_ranks[order[place]] = place;
    return m_ranks;
}

bool PingSortFilterProxyModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    if (sortColumn() != 0)
        return true;
    if (const AbstractServerModel* model = serverModel()) {
        const QVector<int>& rank = ranks(model);
        if (left.row() < rank.size() && right.row() < rank.size())
            return rank[left.row()] < rank[right.row()];
        return namesInOrder(model->sortText(left), model->sortText(right));
    }
    return namesInOrder(lowerName(left), lowerName(right));
}
