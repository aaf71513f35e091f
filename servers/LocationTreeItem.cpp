#include "LocationTreeItem.h"

LocationTreeItem::LocationTreeItem(ServerInfo data, LocationTreeItem* parent)
    : m_parent(parent)
{
    setData(std::move(data));
}

LocationTreeItem::~LocationTreeItem()
{
    qDeleteAll(m_children);
}

LocationTreeItem* LocationTreeItem::child(int row) const
{
    return row >= 0 && row < m_children.size() ? m_children[row] : nullptr;
}

int LocationTreeItem::childCount() const
{
    return m_children.size();
}

LocationTreeItem* LocationTreeItem::parent() const
{
    return m_parent;
}

int LocationTreeItem::row() const
{
    return m_row;
}

void LocationTreeItem::appendChild(LocationTreeItem* child)
{
    child->m_parent = this;
    child->m_row = m_children.size();
    m_children.append(child);
}

ServerInfo LocationTreeItem::data() const
{
    return m_data;
}

const ServerInfo& LocationTreeItem::record() const
{
    return m_data;
}

void LocationTreeItem::setData(ServerInfo data)
{
    m_data = std::move(data);
    m_sortText = (m_data.name.isEmpty() ? m_data.groupName : m_data.name).toLower();
}

const QString& LocationTreeItem::sortText() const
{
    return m_sortText;
}
