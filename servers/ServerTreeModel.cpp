#include "ServerTreeModel.h"

#include <QDebug>
#include <QHash>
#include <QMap>

#include "TextOrder.h"

namespace {
const int columns = 2;

QStringView groupOf(const QString& name)
{
    const int hyphen = name.indexOf(QLatin1Char('-'));
    return hyphen < 0 ? QStringView(name) : QStringView(name).left(hyphen);
}

ServerIdentif identifOf(const ServerInfo& server)
{
    return ServerIdentif(server.user, server.name);
}
} // namespace

void ServerTreeModel::setServers(const QVector<ServerInfo>& list)
{
    beginResetModel();
    m_servers = list;
    m_groups.clear();
    const int count = m_servers.size();
    m_groupOf.resize(count);
    m_sortTexts.clear();
    m_sortTexts.reserve(count);

    // Group the records in one pass, keeping the order in which groups first appear. The keys are views into the
    // names of the list, which the model holds.
    QHash<QStringView, int> groupIndex;
    for (int i = 0; i < count; ++i) {
        const ServerInfo& server = m_servers.at(i);
        const QStringView name = groupOf(server.name);
        auto it = groupIndex.find(name);
        if (it == groupIndex.end()) {
            it = groupIndex.insert(name, m_groups.size());
            Group group;
            group.record.groupName = name.toString();
            // A double-hop group's first member may well show its exit's flag: the group's own location speaks
            // first (below).
            group.record.flag = server.flag;
            group.sortText = lowerCased(group.record.groupName);
            m_groups.append(std::move(group));
        }
        Group& group = m_groups[*it];
        m_groupOf[i] = *it;
        group.members.append(i);
        m_sortTexts.append(lowerCased(server.name));
    }
    for (Group& group : m_groups) {
        for (int i : qAsConst(group.members)) {
            const ServerInfo& server = m_servers.at(i);
            if (server.type == ServerInfo::Standart && server.name == group.record.groupName) {
                group.record.flag = server.flag;
                break;
            }
        }
    }
    rankByText();
    endResetModel();
}

void ServerTreeModel::rankByText()
{
    // The groups among themselves, and every group's servers in one sort with the group as the first key.
    QVector<QString> texts;
    texts.reserve(m_groups.size());
    for (const Group& group : qAsConst(m_groups))
        texts.append(group.sortText);
    const QVector<int> groupOrder = orderByText(texts);
    for (int place = 0; place < groupOrder.size(); ++place)
        m_groups[groupOrder[place]].sortRank = place;

    const QVector<int> serverOrder = orderByText(m_sortTexts, m_groupOf);
    // Sorted by group first, so each group's servers are one run; a rank counts from the run's start.
    m_sortRanks.resize(serverOrder.size());
    int runStart = 0;
    for (int place = 0; place < serverOrder.size(); ++place) {
        if (place > 0 && m_groupOf[serverOrder[place]] != m_groupOf[serverOrder[place - 1]])
            runStart = place;
        m_sortRanks[serverOrder[place]] = place - runStart;
    }
}

ServerInfo ServerTreeModel::locationByIndex(const QModelIndex& index) const
{
    if (!index.isValid())
        return ServerInfo();
    return isServer(index) ? m_servers.at(positionOf(index)) : m_groups.at(index.row()).record;
}

const QString& ServerTreeModel::sortText(const QModelIndex& index) const
{
    if (!index.isValid())
        return noName();
    return isServer(index) ? m_sortTexts.at(positionOf(index)) : m_groups.at(index.row()).sortText;
}

int ServerTreeModel::sortRank(const QModelIndex& index) const
{
    if (!index.isValid())
        return -1;
    return isServer(index) ? m_sortRanks.at(positionOf(index)) : m_groups.at(index.row()).sortRank;
}

QVector<ServerInfo> ServerTreeModel::getFavoriteLocation() const
{
    // The last record of a (login, name) pair speaks for it, as in the list handed in.
    QMap<ServerIdentif, const ServerInfo*> servers;
    for (const Group& group : m_groups) {
        for (int i : group.members)
            servers.insert(identifOf(m_servers.at(i)), &m_servers.at(i));
    }
    QVector<ServerInfo> favorites;
    for (const ServerInfo* server : qAsConst(servers)) {
        if (server->favorite)
            favorites.append(*server);
    }
    return favorites;
}

QModelIndex ServerTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    // What hasIndex() checks, with one look at the parent: sorting and filtering ask thousands of times.
    if (row < 0 || column < 0 || column >= columns || parent.column() > 0 || isServer(parent))
        return QModelIndex();
    if (!parent.isValid())
        return row < m_groups.size() ? createIndex(row, column, quintptr(0)) : QModelIndex();
    const QVector<int>& members = m_groups.at(parent.row()).members;
    return row < members.size() ? createIndex(row, column, quintptr(members.at(row) + 1)) : QModelIndex();
}

QModelIndex ServerTreeModel::parent(const QModelIndex& child) const
{
    if (!isServer(child))
        return QModelIndex();
    return createIndex(m_groupOf.at(positionOf(child)), 0, quintptr(0));
}

QModelIndex ServerTreeModel::sibling(int row, int column, const QModelIndex& index) const
{
    return QAbstractItemModel::sibling(row, column, index);
}

bool ServerTreeModel::hasChildren(const QModelIndex& parent) const
{
    return rowCount(parent) > 0;
}

Qt::ItemFlags ServerTreeModel::flags(const QModelIndex& index) const
{
    return QAbstractItemModel::flags(index);
}

int ServerTreeModel::rowCount(const QModelIndex& parent) const
{
    if (parent.column() > 0 || isServer(parent))
        return 0;
    return parent.isValid() ? m_groups.at(parent.row()).members.size() : m_groups.size();
}

int ServerTreeModel::columnCount(const QModelIndex&) const
{
    return columns;
}

QVariant ServerTreeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    if (!isServer(index)) {
        const ServerInfo& record = m_groups.at(index.row()).record;
        if (role == Qt::DisplayRole && index.column() == 0)
            return record.groupName;
        if (role == FlagRole)
            return record.flag;
        return QVariant();
    }
    const ServerInfo& record = m_servers.at(positionOf(index));
    switch (role) {
    case Qt::DisplayRole:
        if (index.column() == 0)
            return record.name;
        if (index.column() == FavoriteColumn)
            return record.favorite;
        break;
    case FlagRole:
        return record.flag;
    case TypeRole:
        return int(record.type);
    default:
        break;
    }
    return QVariant();
}

bool ServerTreeModel::setData(const QModelIndex& index, const QVariant& value, int)
{
    if (!isServer(index) || index.column() != FavoriteColumn)
        return false;

    const int position = positionOf(index);
    const ServerIdentif identif = identifOf(m_servers.at(position));
    const bool favorite = value.toBool();
    logFavoriteChange(index, m_servers.at(position), m_servers.at(position).favorite, favorite);

    // A record listed twice sits twice in the same group; both rows show one mark.
    const int group = m_groupOf.at(position);
    const QVector<int>& members = m_groups.at(group).members;
    for (int row = 0; row < members.size(); ++row) {
        const int repeat = members.at(row);
        if (identifOf(m_servers.at(repeat)) != identif)
            continue;
        m_servers[repeat].favorite = favorite;
        const QModelIndex changed = createIndex(row, FavoriteColumn, quintptr(repeat + 1));
        emit dataChanged(changed, changed);
    }
    // The group's visibility in a filtered view may depend on this mark.
    const QModelIndex groupIndex = createIndex(group, 0, quintptr(0));
    emit dataChanged(groupIndex, groupIndex.siblingAtColumn(FavoriteColumn));
    emit favoriteChanged();
    return true;
}
