#pragma once

#include "AbstractFilterModel.h"

// Filters the flat server table by kind, favourite mark or search text and orders it by
// name, names without a hyphen first. Starts on the standard-server view.
class PingSortFilterProxyModel : public AbstractFilterModel
{
    Q_OBJECT

public:
    using AbstractFilterModel::AbstractFilterModel;

    void showFavorite() override;
    void showStandart() override;
    void showDouble() override;
    void showAll(QString& search) override;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    bool nameContainsSearch(const QModelIndex& sourceIndex) const;
    void setModes(bool favorite, bool isDouble, const QString& text);

    bool favoriteMode = false;
    bool doubleMode = false;
    QString search;
    QString lowerSearch;
};
