#pragma once

#include "AbstractFilterModel.h"

// The view switching that the flat and the tree proxies share: standard servers, double-hop servers,
// favourites, or every kind whose name holds a search text. Starts on the standard-server view.
class ViewFilterModel : public AbstractFilterModel
{
    Q_OBJECT

public:
    using AbstractFilterModel::AbstractFilterModel;

    void showFavorite() override;
    void showStandart() override;
    void showDouble() override;
    void showAll(QString& search) override;

protected:
    // True without a search text; otherwise whether the row's lower-cased name holds it.
    bool nameContainsSearch(const QModelIndex& sourceIndex) const;

    bool favoriteMode = false;
    bool doubleMode = false;

private:
    void setModes(bool favorite, bool isDouble, const QString& text);

    QString search;
    QString lowerSearch;
};
