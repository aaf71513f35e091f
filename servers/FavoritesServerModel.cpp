#include "FavoritesServerModel.h"

#include "TextOrder.h"

#include <QDebug>
#include <algorithm>

namespace {
const int columns = 2;
const int bestCount = 3;

ServerInfo headerRow(const QString& name, bool favorite)
{
    ServerInfo header;
    header.name = name;
    header.favorite = favorite;
    header.type = ServerInfo::ServerType(0);
    return header;
}
} // namespace

const QString FavoritesServerModel::favoriteHeaderName = QStringLiteral("<*>");
const QString FavoritesServerModel::recommendedHeaderName = QStringLiteral("<=>");

void FavoritesServerModel::setServers(QVector<ServerInfo> servers)
{
    beginResetModel();
    list.clear();
    appendFavoriteServers(servers);
    appendBestStandartServers(servers);
    appendBestDoubleServers(servers);
    sortTexts.clear();
    sortTexts.reserve(list.size());
    for (const ServerInfo& server : list)
        sortTexts.append(lowerCased(server.name));
    endResetModel();
}

void FavoritesServerModel::appendFavoriteServers(const QVector<ServerInfo>& servers)
{
    bool headerAdded = false;
    for (const ServerInfo& server : servers) {
        if (!server.favorite)
            continue;
        if (!headerAdded) {
            list.append(headerRow(favoriteHeaderName, true));
            headerAdded = true;
        }
        list.append(server);
    }
}

void FavoritesServerModel::appendBestStandartServers(const QVector<ServerInfo>& servers)
{
    list.append(headerRow(recommendedHeaderName, false));
    appendBestOfType(servers, ServerInfo::Standart);
}

void FavoritesServerModel::appendBestDoubleServers(const QVector<ServerInfo>& servers)
{
    appendBestOfType(servers, ServerInfo::Double);
}

void FavoritesServerModel::appendBestOfType(const QVector<ServerInfo>& servers, ServerInfo::ServerType type)
{
    QVector<const ServerInfo*> candidates;
    for (const ServerInfo& server : servers) {
        if (server.type == type)
            candidates.append(&server);
    }
    // Only the first few are needed. Measured latencies (above 0) come first, lowest first; servers without one
    // follow. Equal latencies, and all servers without one, keep the list's order.
    const int count = std::min(bestCount, int(candidates.size()));
    std::partial_sort(
        candidates.begin(), candidates.begin() + count, candidates.end(), [](const ServerInfo* a, const ServerInfo* b) {
            const bool aMeasured = a->ping > 0;
            const bool bMeasured = b->ping > 0;
            if (aMeasured != bMeasured)
                return aMeasured;
            return aMeasured && a->ping != b->ping ? a->ping < b->ping : a < b;
        });
    for (int i = 0; i < count; ++i)
        list.append(*candidates[i]);
}

ServerInfo FavoritesServerModel::locationByIndex(const QModelIndex& index) const
{
    if (index.row() < 0 || index.row() >= list.size())
        return ServerInfo();
    return list[index.row()];
}

const QString& FavoritesServerModel::sortText(const QModelIndex& index) const
{
    if (index.row() < 0 || index.row() >= sortTexts.size())
        return noName();
    return sortTexts[index.row()];
}

QVector<ServerInfo> FavoritesServerModel::getFavoriteLocation() const
{
    QVector<ServerInfo> favorites;
    for (const ServerInfo& server : list) {
        if (server.favorite)
            favorites.append(server);
    }
    return favorites;
}

int FavoritesServerModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : list.size();
}

int FavoritesServerModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columns;
}

QVariant FavoritesServerModel::data(const QModelIndex& index, int role) const
{
    if (index.row() < 0 || index.column() < 0 || index.row() >= list.size())
        return QVariant();
    const ServerInfo& server = list[index.row()];
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
    case SectionHeaderRole:
        if (index.column() == 0)
            return server.name == favoriteHeaderName || server.name == recommendedHeaderName;
        break;
    default:
        break;
    }
    return QVariant();
}

bool FavoritesServerModel::setData(const QModelIndex& index, const QVariant& value, int)
{
    if (index.column() != FavoriteColumn || index.row() < 0 || index.row() >= list.size())
        return false;
    ServerInfo& server = list[index.row()];
    const bool old = server.favorite;
    server.favorite = value.toBool();
    logFavoriteChange(index, server, old, server.favorite);
    emit dataChanged(index, index);
    return true;
}
