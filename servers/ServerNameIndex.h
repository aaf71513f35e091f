#pragma once

#include <QVector>

#include "ServerInfo.h"

// What a flat server table derives from its list's names alone: made once per list and shared by every table made
// from a list of the same names in the same order, as the server list page makes a new one on each switch of view.
class ServerNameIndex
{
public:
    explicit ServerNameIndex(const QVector<ServerInfo>& list);

    int rowCount() const { return m_rowEntries.size(); }
    // Row -> entry: records of one name share an entry; entries in order of first appearance.
    const QVector<int>& rowEntries() const { return m_rowEntries; }
    int entryCount() const { return m_sortTexts.size(); }
    // Entry -> its lower-cased name.
    const QVector<QString>& sortTexts() const { return m_sortTexts; }
    // Row -> its place in name order: names without a hyphen first, then by lower-cased name, ties in row order.
    const QVector<int>& ranks() const { return m_ranks; }

private:
    QVector<int> m_rowEntries;
    QVector<QString> m_sortTexts;
    QVector<int> m_ranks;
};
