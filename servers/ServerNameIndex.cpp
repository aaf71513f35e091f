#include "ServerNameIndex.h"

#include <QHash>

#include "TextOrder.h"

namespace {
// Rows of one lower-cased name beyond this many are told apart by a hash rather than one by one.
const int longRun = 16;
} // namespace

ServerNameIndex::ServerNameIndex(const QVector<ServerInfo>& list)
{
    const int rows = list.size();
    QVector<QString> lower;
    QVector<int> hyphens;
    lower.reserve(rows);
    hyphens.reserve(rows);
    for (const ServerInfo& server : list) {
        lower.append(lowerCased(server.name));
        hyphens.append(lower.constLast().contains(QLatin1Char('-')) ? 1 : 0);
    }

    // Name order: names without a hyphen first, then by lower-cased name, ties in row order.
    const QVector<int> order = orderByText(lower, hyphens);
    m_ranks.resize(rows);
    for (int place = 0; place < rows; ++place)
        m_ranks[order[place]] = place;

    // Names that are equal are equal lower-cased too, so they sit in one run of the order; each row learns the first
    // row of its name there.
    QVector<int> firstRow(rows);
    for (int start = 0; start < rows;) {
        int end = start + 1;
        while (end < rows && lower[order[end]] == lower[order[start]])
            ++end;
        if (end - start > longRun) {
            QHash<QString, int> firstOfName;
            for (int place = start; place < end; ++place) {
                const int row = order[place];
                auto it = firstOfName.find(list[row].name);
                if (it == firstOfName.end())
                    it = firstOfName.insert(list[row].name, row);
                firstRow[row] = *it;
            }
        } else {
            for (int place = start; place < end; ++place) {
                const int row = order[place];
                int first = start;
                while (list[order[first]].name != list[row].name)
                    ++first;
                firstRow[row] = order[first];
            }
        }
        start = end;
    }

    // One entry per name, in order of first appearance.
    m_rowEntries.resize(rows);
    for (int row = 0; row < rows; ++row) {
        if (firstRow[row] == row) {
            m_rowEntries[row] = m_sortTexts.size();
            m_sortTexts.append(lower[row]);
        } else {
            m_rowEntries[row] = m_rowEntries[firstRow[row]];
        }
    }
}
