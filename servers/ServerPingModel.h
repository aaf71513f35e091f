#pragma once

#include <QSharedPointer>
#include <QString>
#include <QVector>

#include "AbstractServerModel.h"
#include "ServerNameIndex.h"

class QThreadPool;
class QTimer;

// The whole server list as a flat table, one row per record handed in. Records that share
// a name share one entry (the last one given), so such rows show and edit the same record.
class ServerPingModel : public AbstractServerModel
{
    Q_OBJECT

public:
    explicit ServerPingModel(QObject* parent = nullptr);

    // `names` may be the index of another table of the same names in the same order; it is made anew when missing.
    void setServers(const QVector<ServerInfo>& list, QSharedPointer<const ServerNameIndex> names = {});
    const QSharedPointer<const ServerNameIndex>& names() const { return m_names; }
    // Row -> its place in name order.
    const QVector<int>& nameRanks() const { return m_names->ranks(); }
    ServerInfo locationByIndex(const QModelIndex& index) const override;
    const QString& sortText(const QModelIndex& index) const override;
    // The lowest measured (positive) latency, the first in name order among equals; when no record has one, the
    // last record in name order.
    ServerInfo getBestLocation() const;
    QVector<ServerInfo> getFavoriteLocation() const;
    void stopPing();

    // As the table model's, without its two virtual calls: sorting ten thousand rows asks for two per comparison.
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
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

    // The rows' entries, names and name order.
    QSharedPointer<const ServerNameIndex> m_names;
    // One record per entry: the last of that name.
    QVector<ServerInfo> servers;
    // Positions in `servers` in name order; empty until asked for.
    mutable QVector<int> nameOrder;
    QThreadPool* pool;
    QTimer* timer;
    int counter = 0;
};
