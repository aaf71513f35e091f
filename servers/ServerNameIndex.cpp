#include "ServerNameIndex.h"

#include <QHash>

#include <algorithm>
#include <numeric>

ServerNameIndex::ServerNameIndex(const QVector<ServerInfo>& list)
{
    const int rows = list.size();
    QHash<QString, int> entryOfName;
    entryOfName.reserve(rows);
    m_rowEntries.reserve(rows);
    QVector<bool> hyphens;
    for (const ServerInfo& server : list) {
        auto it = entryOfName.find(server.name);
        if (it == entryOfName.end()) {
            it = entryOfName.insert(server.name, m_sortTexts.size());
            m_sortTexts.append(server.name.toLower());
            hyphens.append(m_sortTexts.constLast().contains(QLatin1Char('-')));
        }
        m_rowEntries.append(*it);
    }

    // The entries in name order; entries of the same lower-cased name make one group, whose rows keep their order.
    const int entries = m_sortTexts.size();
    QVector<int> order(entries);
    std::iota(order.begin(), order.end(), 0);
    const QString* texts = m_sortTexts.constData();
    const bool* hyphen = hyphens.constData();
    std::sort(order.begin(), order.end(), [texts, hyphen](int left, int right) {
        if (hyphen[left] != hyphen[right])
            return hyphen[right];
        return texts[left] < texts[right];
    });
    QVector<int> groupOfEntry(entries);
    int groups = 0;
    for (int place = 0; place < entries; ++place) {
        const bool sameText = place > 0 && texts[order[place]] == texts[order[place - 1]];
        groupOfEntry[order[place]] = sameText ? groups - 1 : groups++;
    }
    // Each group's first place, then the rows of each group in row order.
    QVector<int> next(groups + 1, 0);
    for (const int entry : qAsConst(m_rowEntries))
        ++next[groupOfEntry[entry] + 1];
    std::partial_sum(next.begin(), next.end(), next.begin());
    m_ranks.resize(rows);
    for (int row = 0; row < rows; ++row)
        m_ranks[row] = next[groupOfEntry.at(m_rowEntries.at(row))]++;
}
