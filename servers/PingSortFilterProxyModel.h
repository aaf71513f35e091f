#pragma once

#include "ViewFilterModel.h"

#include <QVector>

// Filters the flat server table by kind, favourite mark or search text and orders it by
// name, names without a hyphen first. Starts on the standard-server view.
class PingSortFilterProxyModel : public ViewFilterModel
{
    Q_OBJECT

public:
    using ViewFilterModel::ViewFilterModel;

    void setSourceModel(QAbstractItemModel* model) override;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    // Each source row's place in that order, ties in source order, worked out once per list: a sort then compares two
    // numbers rather than two names, and a view switch sorts ten thousand rows.
    const QVector<int>& ranks(const AbstractServerModel* model) const;

    mutable QVector<int> m_ranks;
};
