#pragma once

#include "ViewFilterModel.h"

// Filters the flat server table by kind, favourite mark or search text and orders it by
// name, names without a hyphen first. Starts on the standard-server view.
class PingSortFilterProxyModel : public ViewFilterModel
{
    Q_OBJECT

public:
    using ViewFilterModel::ViewFilterModel;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
};
