#pragma once

#include <QVector>

#include "ServerInfo.h"

// One node of the server tree: the root, a group row or a server row. Owns its children.
class LocationTreeItem
{
public:
    explicit LocationTreeItem(ServerInfo data, LocationTreeItem* parent = nullptr);
    ~LocationTreeItem();
    LocationTreeItem(const LocationTreeItem&) = delete;
    LocationTreeItem& operator=(const LocationTreeItem&) = delete;

    LocationTreeItem* child(int row) const;
    int childCount() const;
    LocationTreeItem* parent() const;
    int row() const;
    // Takes ownership and makes this node the child's parent.
    void appendChild(LocationTreeItem* child);

    ServerInfo data() const;
    const ServerInfo& record() const;
    void setData(ServerInfo data);
    // The lower-cased text the row is shown by: the server name, or a group row's group name.
    const QString& sortText() const;

private:
    ServerInfo m_data;
    QString m_sortText;
    LocationTreeItem* m_parent;
    QVector<LocationTreeItem*> m_children;
    // Children are only ever appended, so a node's position is fixed when it is added.
    int m_row = 0;
};
