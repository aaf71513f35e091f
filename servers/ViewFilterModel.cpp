#include "ViewFilterModel.h"

#include "AbstractServerModel.h"

void ViewFilterModel::showFavorite()
{
    setModes(true, false, search);
}

void ViewFilterModel::showStandart()
{
    setModes(false, false, search);
}

void ViewFilterModel::showDouble()
{
    setModes(false, true, search);
}

void ViewFilterModel::showAll(QString& text)
{
    setModes(true, true, text);
}

void ViewFilterModel::setModes(bool favorite, bool isDouble, const QString& text)
{
    // The rows follow the source's own changes already: the same view again would only sort them again.
    if (favorite == favoriteMode && isDouble == doubleMode && text == search && search.isNull() == text.isNull())
        return;
    favoriteMode = favorite;
    doubleMode = isDouble;
    search = text;
    lowerSearch = text.toLower();
    // A new view changes most rows. Mapping every row anew costs a sort; updating the mapping in place inserts each
    // row that comes back into the sorted rows one at a time, which grows with the square of the list's length.
    invalidate();
}

bool ViewFilterModel::nameContainsSearch(const QModelIndex& sourceIndex) const
{
    if (search.isEmpty())
        return true;
    if (const AbstractServerModel* model = serverModel())
        return model->sortText(sourceIndex).contains(lowerSearch);
    return lowerName(sourceIndex).contains(lowerSearch);
}
