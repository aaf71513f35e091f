#pragma once

#include "AbstractFilterModel.h"

// Shows the favourites list as it is: every row, in the source's order.
class FavoritesSortFilterProxyModel : public AbstractFilterModel
{
    Q_OBJECT

public:
    using AbstractFilterModel::AbstractFilterModel;

    void showFavorite() override { }
    void showStandart() override { }
    void showDouble() override { }
    void showAll(QString&) override { }

protected:
    bool filterAcceptsRow(int, const QModelIndex&) const override { return true; }
    bool lessThan(const QModelIndex&, const QModelIndex&) const override { return false; }
};
