#pragma once

#include <QString>
#include <QVector>

#include "AbstractServerModel.h"

class QThreadPool;
class QTimer;

// The whole server list as a flat table, one row per record handed in. Records that share
// a name share one entry (the last one given), so such rows show and edit the same record.
class ServerPingModel : public AbstractServerModel
{
    Q_OBJECT

public:
    explicit ServerPingModel(QObject* parent = nullptr);

    void setServers(QVector<ServerInfo> list);
    ServerInfo locationByIndex(const QModelIndex& index) const override;
    const QString& sortText(const QModelIndex& index) const override;
    // The lowest measured (positive) latency, the first in name order among equals; when no record has one, the
    // last record in name order.
    ServerInfo getBestLocation() const;
    QVector<ServerInfo> getFavoriteLocation() const;
    void stopPing();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // Column 1 only: sets the favourite mark of the row's record.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

public slots:
    // The model measures nothing itself; latencies come with the records.
    void refresh() { }
    void onPingTimerTimeout() { }
    void onPingFinished(bool, double, QString, QString) { }

signals:
    void progressPing(float progress);
    void findBest(ServerInfo server);
    void favoriteChanged();

private:
    const QVector<int>& entriesByName() const;

    // One entry per distinct name, in order of first appearance.
    QVector<ServerInfo> servers;
    // The lower-cased name of each entry of `servers`.
    QVector<QString> sortTexts;
    // Row number -> position in `servers`.
    QVector<int> rows;
    // Positions in `servers` in name order; empty until asked for.
    mutable QVector<int> nameOrder;
    QThreadPool* pool;
    QTimer* timer;
    int counter = 0;
};
