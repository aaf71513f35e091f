#pragma once

#include <QPointer>
#include <QSortFilterProxyModel>
#include <QString>

class AbstractServerModel;

// Base of the proxies that switch a server list between its views.
class AbstractFilterModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    virtual void showFavorite() = 0;
    virtual void showStandart() = 0;
    virtual void showDouble() = 0;
    // Every kind of server whose name contains `search`, ignoring case.
    virtual void showAll(QString& search) = 0;

    void setSourceModel(QAbstractItemModel* model) override;

protected:
    // The source when it is a server model, whose sort texts spare the proxies data() calls.
    const AbstractServerModel* serverModel() const { return m_serverModel.data(); }
    // The lower-cased display text of a source row, for sources that are not server models.
    static QString lowerName(const QModelIndex& sourceIndex);

private:
    QPointer<AbstractServerModel> m_serverModel;
};
