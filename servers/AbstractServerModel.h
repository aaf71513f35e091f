#pragma once

#include <QAbstractTableModel>

#include "ServerInfo.h"

// Base of the item models that present server locations to the pages.
class AbstractServerModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    // Roles beyond the display role; column 1's display role is the favourite mark.
    enum Role {
        FlagRole = Qt::UserRole,
        TypeRole = Qt::UserRole + 1,
        SectionHeaderRole = Qt::UserRole + 2,
    };

    // Column 1 carries the favourite mark; it is the only editable column.
    static constexpr int FavoriteColumn = 1;

    using QAbstractTableModel::QAbstractTableModel;

    // The location views show no headers.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // The record behind a row; a default record when there is none.
    virtual ServerInfo locationByIndex(const QModelIndex& index) const = 0;
    // The lower-cased display text of a row's first column, kept ready by the model: proxies
    // sort and search thousands of rows on it, and data() with its QVariant costs most of that.
    virtual const QString& sortText(const QModelIndex& index) const = 0;

protected:
    static const QString& noName();
    // The debug line every favourite toggle leaves: the row, the record and the old and new marks.
    static void logFavoriteChange(const QModelIndex& index, const ServerInfo& server, bool oldMark, bool newMark);
};
