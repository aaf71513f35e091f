#pragma once

#include <QVector>
#include <memory>

#include "AbstractServerModel.h"
#include "ServerIdentif.h"

class LocationTreeItem;

// The server list as a two-level tree: one group row per name prefix (the part before the
// first "-"), in order of first appearance, with that group's servers beneath it.
class ServerTreeModel : public AbstractServerModel
{
    Q_OBJECT

public:
    explicit ServerTreeModel(QObject* parent = nullptr);
    ~ServerTreeModel() override;

    void setServers(QVector<ServerInfo> list);
    // A server row's record; a group row's record carries only the group name and its flag: that of the standard
    // server named like the group, else that of its first server.
    ServerInfo locationByIndex(const QModelIndex& index) const override;
    const QString& sortText(const QModelIndex& index) const override;
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
    LocationTreeItem* itemOf(const QModelIndex& index) const;
    bool isServerItem(const LocationTreeItem* item) const;

    std::unique_ptr<LocationTreeItem> m_root;
};
