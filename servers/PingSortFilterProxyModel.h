#pragma once

#include <QPointer>

#include "ViewFilterModel.h"

class ServerPingModel;

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
    // The source when it is the flat table, which knows each row's place in name order.
    QPointer<const ServerPingModel> m_flat;
};
