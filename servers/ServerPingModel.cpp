#include "ServerPingModel.h"

#include <QDebug>
#include <QHash>
#include <QThreadPool>
#include <QTimer>
#include <algorithm>
#include <numeric>

namespace {
const int maxPoolThreads = 4;
const int timerIntervalMs = 10;
const int stopWaitMs = 1;
const int columns = 2;
} // namespace

ServerPingModel::ServerPingModel(QObject* parent)
    : AbstractServerModel(parent)
    , m_names(QSharedPointer<const ServerNameIndex>::create(QVector<ServerInfo>()))
    , pool(new QThreadPool(this))
    , timer(new QTimer(this))
{
    pool->setMaxThreadCount(maxPoolThreads);
    connect(timer, &QTimer::timeout, this, &ServerPingModel::onPingTimerTimeout);
}

void ServerPingModel::setServers(const QVector<ServerInfo>& list, QSharedPointer<const ServerNameIndex> names)
{
    beginResetModel();
    stopPing();

    // One entry per name (the last record wins), in order of first appearance; rows point at them.
    if (!names || names->rowCount() != list.size())
        names = QSharedPointer<const ServerNameIndex>::create(list);
    m_names = std::move(names);
    const QVector<int>& entries = m_names->rowEntries();
    if (m_names->entryCount() == list.size()) {
        // No name repeats: the entries are the rows, and the list is shared until a star changes.
        servers = list;
    } else {
        servers.clear();
        servers.resize(m_names->entryCount());
        for (int row = 0; row < list.size(); ++row)
            servers[entries[row]] = list[row];
    }
    nameOrder.clear();

    endResetModel();
    emit progressPing(0.0f);
    timer->start(timerIntervalMs);
}

ServerInfo ServerPingModel::locationByIndex(const QModelIndex& index) const
{
    if (index.row() < 0 || index.row() >= rowCount())
        return ServerInfo();
    return servers[m_names->rowEntries()[index.row()]];
}

const QString& ServerPingModel::sortText(const QModelIndex& index) const
{
    if (index.row() < 0 || index.row() >= rowCount())
        return noName();
    return m_names->sortTexts()[m_names->rowEntries()[index.row()]];
}

const QVector<int>& ServerPingModel::entriesByName() const
{
    // Built on demand: only the best-location and favourite queries need the name order.
    if (nameOrder.size() != servers.size()) {
        nameOrder.resize(servers.size());
        std::iota(nameOrder.begin(), nameOrder.end(), 0);
        std::sort(
            nameOrder.begin(), nameOrder.end(), [this](int a, int b) { return servers[a].name < servers[b].name; });
    }
    return nameOrder;
}

ServerInfo ServerPingModel::getBestLocation() const
{
    // The lowest measured latency, the first in name order among equals. A latency of 0 or below was not measured
    // (or the server did not answer); only when no server has one does the last in name order stand in.
    const ServerInfo* bestServer = nullptr;
    for (int entry : entriesByName()) {
        const ServerInfo& server = servers[entry];
        const bool measured = server.ping > 0;
        if (!bestServer || (measured && (bestServer->ping <= 0 || server.ping < bestServer->ping))
            || (!measured && bestServer->ping <= 0))
            bestServer = &server;
    }
    return bestServer ? *bestServer : ServerInfo();
}

QVector<ServerInfo> ServerPingModel::getFavoriteLocation() const
{
    QVector<ServerInfo> favorites;
    for (int entry : entriesByName()) {
        const ServerInfo& server = servers[entry];
        if (server.favorite)
            favorites.append(server);
    }
    return favorites;
}

void ServerPingModel::stopPing()
{
    timer->stop();
    pool->clear();
    pool->waitForDone(stopWaitMs);
    counter = 0;
}

QModelIndex ServerPingModel::index(int row, int column, const QModelIndex& parent) const
{
    if (parent.isValid() || row < 0 || column < 0 || row >= m_names->rowCount() || column >= columns)
        return QModelIndex();
    return createIndex(row, column);
}

int ServerPingModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_names->rowEntries().size();
}

int ServerPingModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columns;
}

QVariant ServerPingModel::data(const QModelIndex& index, int role) const
{
    if (index.row() < 0 || index.column() < 0 || index.row() >= rowCount())
        return QVariant();
    const ServerInfo& server = servers[m_names->rowEntries()[index.row()]];
    switch (role) {
    case Qt::DisplayRole:
        if (index.column() == 0)
            return server.name;
        if (index.column() == FavoriteColumn)
            return server.favorite;
        break;
    case FlagRole:
        if (index.column() == 0)
            return server.flag;
        break;
    case TypeRole:
        return int(server.type);
    default:
        break;
    }
    return QVariant();
}

bool ServerPingModel::setData(const QModelIndex& index, const QVariant& value, int)
{
    if (index.column() != FavoriteColumn || index.row() < 0 || index.row() >= rowCount())
        return false;
    ServerInfo& server = servers[m_names->rowEntries()[index.row()]];
    const bool old = server.favorite;
    server.favorite = value.toBool();
    logFavoriteChange(index, server, old, server.favorite);
    emit dataChanged(index, index);
    emit favoriteChanged();
    return true;
}
