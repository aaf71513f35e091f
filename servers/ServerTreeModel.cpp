#include "ServerTreeModel.h"

#include <QDebug>
#include <QHash>
#include <QMap>

#include "LocationTreeItem.h"

namespace {
const int columns = 2;

QString groupOf(const QString& name)
{
    const int hyphen = name.indexOf(QLatin1Char('-'));
    return hyphen < 0 ? name : name.left(hyphen);
}

ServerIdentif identifOf(const ServerInfo& server)
{
    return ServerIdentif(server.user, server.name);
}
} // namespace

ServerTreeModel::ServerTreeModel(QObject* parent)
    : AbstractServerModel(parent)
    , m_root(std::make_unique<LocationTreeItem>(ServerInfo()))
{ }

ServerTreeModel::~ServerTreeModel() = default;

void ServerTreeModel::setServers(QVector<ServerInfo> list)
{
    beginResetModel();
    m_root = std::make_unique<LocationTreeItem>(ServerInfo());

    // Group the records in one pass, keeping the order in which groups first appear.
    QHash<QString, int> groupIndex;
    QVector<QString> groupNames;
    QVector<QVector<int>> members;
    for (int i = 0; i < list.size(); ++i) {
        const QString group = groupOf(list[i].name);
        auto it = groupIndex.find(group);
        if (it == groupIndex.end()) {
            it = groupIndex.insert(group, groupNames.size());
            groupNames.append(group);
            members.append(QVector<int>());
        }
        members[*it].append(i);
    }

    for (int g = 0; g < groupNames.size(); ++g) {
        ServerInfo groupRecord;
        groupRecord.groupName = groupNames[g];
        // A double-hop group's first member may well show its exit's flag: the group's own location speaks first.
        groupRecord.flag = list[members[g].first()].flag;
        for (int i : members[g]) {
            if (list[i].type == ServerInfo::Standart && list[i].name == groupNames[g]) {
                groupRecord.flag = list[i].flag;
                break;
            }
        }
        auto* groupItem = new LocationTreeItem(std::move(groupRecord));
        m_root->appendChild(groupItem);
        for (int i : members[g])
            groupItem->appendChild(new LocationTreeItem(list[i]));
    }
    endResetModel();
}

LocationTreeItem* ServerTreeModel::itemOf(const QModelIndex& index) const
{
    return index.isValid() ? static_cast<LocationTreeItem*>(index.internalPointer()) : m_root.get();
}

bool ServerTreeModel::isServerItem(const LocationTreeItem* item) const
{
    return item != m_root.get() && item->parent() != m_root.get();
}

ServerInfo ServerTreeModel::locationByIndex(const QModelIndex& index) const
{
    return index.isValid() ? itemOf(index)->data() : ServerInfo();
}

const QString& ServerTreeModel::sortText(const QModelIndex& index) const
{
    return index.isValid() ? itemOf(index)->sortText() : noName();
}

QVector<ServerInfo> ServerTreeModel::getFavoriteLocation() const
{
    // The last record of a (login, name) pair speaks for it, as in the list handed in.
    QMap<ServerIdentif, const ServerInfo*> servers;
    for (int group = 0; group < m_root->childCount(); ++group) {
        const LocationTreeItem* groupItem = m_root->child(group);
        for (int row = 0; row < groupItem->childCount(); ++row) {
            const ServerInfo& server = groupItem->child(row)->record();
            servers.insert(identifOf(server), &server);
        }
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
    if (row < 0 || column < 0 || column >= columns || parent.column() > 0)
        return QModelIndex();
    const LocationTreeItem* parentItem = itemOf(parent);
    if (row >= parentItem->childCount())
        return QModelIndex();
    return createIndex(row, column, parentItem->child(row));
}

QModelIndex ServerTreeModel::parent(const QModelIndex& child) const
{
    if (!child.isValid())
        return QModelIndex();
    LocationTreeItem* parentItem = itemOf(child)->parent();
    if (!parentItem || parentItem == m_root.get())
        return QModelIndex();
    return createIndex(parentItem->row(), 0, parentItem);
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
    if (parent.column() > 0)
        return 0;
    return itemOf(parent)->childCount();
}

int ServerTreeModel::columnCount(const QModelIndex&) const
{
    return columns;
}

QVariant ServerTreeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const LocationTreeItem* item = itemOf(index);
    const ServerInfo& record = item->record();
    if (!isServerItem(item)) {
        if (role == Qt::DisplayRole && index.column() == 0)
            return record.groupName;
        if (role == FlagRole)
            return record.flag;
        return QVariant();
    }
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
    if (!index.isValid() || index.column() != FavoriteColumn)
        return false;
    LocationTreeItem* item = itemOf(index);
    if (!isServerItem(item))
        return false;

    const ServerIdentif identif = identifOf(item->record());
    const bool favorite = value.toBool();
    logFavoriteChange(index, item->record(), item->record().favorite, favorite);

    // A record listed twice sits twice in the same group; both rows show one mark.
    LocationTreeItem* group = item->parent();
    for (int row = 0; row < group->childCount(); ++row) {
        LocationTreeItem* repeat = group->child(row);
        if (identifOf(repeat->record()) != identif)
            continue;
        ServerInfo record = repeat->data();
        record.favorite = favorite;
        repeat->setData(std::move(record));
        const QModelIndex changed = createIndex(row, FavoriteColumn, repeat);
        emit dataChanged(changed, changed);
    }
    // The group's visibility in a filtered view may depend on this mark.
    const QModelIndex groupIndex = createIndex(group->row(), 0, group);
    emit dataChanged(groupIndex, groupIndex.siblingAtColumn(FavoriteColumn));
    emit favoriteChanged();
    return true;
}
