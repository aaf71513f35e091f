#pragma once

#include "AbstractFilterModel.h"

// Filters the server tree by kind, favourite mark or search text and orders each level by
// name, ignoring case. A group row shows when at least one of its servers is accepted.
class TreePingSortFilterProxyModel : public AbstractFilterModel
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
    bool acceptsOwnRow(int sourceRow, const QModelIndex& sourceParent) const;
    bool hasAcceptedDescendant(const QModelIndex& sourceIndex) const;

    bool favoriteMode = false;
    bool doubleMode = false;
    QString search;
    QString lowerSearch;
};
