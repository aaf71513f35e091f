#pragma once

#include <QVector>

#include "AbstractServerModel.h"
#include "ServerIdentif.h"

// The server list as a two-level tree: one group row per name prefix (the part before the
// first "-"), in order of first appearance, with that group's servers beneath it.
class ServerTreeModel : public AbstractServerModel
{
    Q_OBJECT

public:
    using AbstractServerModel::AbstractServerModel;

    void setServers(const QVector<ServerInfo>& list);
    // A server row's record; a group row's record carries only the group name and its flag: that of the standard
    // server named like the group, else that of its first server.
    ServerInfo locationByIndex(const QModelIndex& index) const override;
    const QString& sortText(const QModelIndex& index) const override;
    // The row's place among its siblings by sort text, ties in row order: worked out once per list, so that a sort
    // of ten thousand rows compares numbers.
    int sortRank(const QModelIndex& index) const;
    // The favourite servers, one per (login, name), in that order.
    QVector<ServerInfo> getFavoriteLocation() const;

    // The table base answers as a flat model; these restore the tree's answers.
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    using QObject::parent;
    QModelIndex parent(const QModelIndex& child) const override;
    QModelIndex sibling(int row, int column, const QModelIndex& index) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // Column 1 of a server row: sets the favourite mark of that server (and of its repeats).
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

signals:
    void favoriteChanged();

private:
    struct Group
    {
        // The group name and its flag.
        ServerInfo record;
        QString sortText;
        int sortRank = 0;
        // Positions in the list, in row order.
        QVector<int> members;
    };

    // A group row's index carries 0, a server row's its position in the list plus one.
    static bool isServer(const QModelIndex& index) { return index.isValid() && index.internalId() != 0; }
    static int positionOf(const QModelIndex& index) { return int(index.internalId()) - 1; }
    void rankByText();

    // The list as handed in, shared with the caller until a mark changes.
    QVector<ServerInfo> m_servers;
    QVector<Group> m_groups;
    // Per position in the list: its group, its lower-cased name and its place among its group's servers.
    QVector<int> m_groupOf;
    QVector<QString> m_sortTexts;
    QVector<int> m_sortRanks;
};
