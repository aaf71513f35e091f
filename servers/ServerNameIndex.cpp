#include "ServerNameIndex.h"

#include <QHash>

#include <algorithm>
#include <numeric>

namespace {
bool hasHyphen(const QString& name)
{
    return name.contains(QLatin1Char('-'));
}
} // namespace

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
            hyphens.append(hasHyphen(m_sortTexts.constLast()));
        }
        m_rowEntries.append(*it);
    }

    // The entries in name order; entries of the same lower-cased name make one group, whose rows keep their order.
    const int entries = m_sortTexts.size();
    QVector<int> order(entries);
    std::iota(order.begin(), order.end(), 0);
    const QString* texts = m_sortTexts.constData();
    const bool* hyphen = hyphens.constData();
    const auto textLess = [texts](int left, int right) {
        const QString& a = texts[left];
        const QString& b = texts[right];
        const int common = std::min(a.size(), b.size());
        const QChar* x = a.constData();
        const QChar* y = b.constData();
        for (int i = 0; i < common; ++i) {
            if (x[i] != y[i])
                return x[i] < y[i];
        }
        return a.size() < b.size();
    };
    std::sort(order.begin(), order.end(), [hyphen, &textLess](int left, int right) {
        if (hyphen[left] != hyphen[right])
            return hyphen[right];
        return textLess(left, right);
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

bool ServerNameIndex::namesInOrder(const QString& left, const QString& right)
{
    const bool leftHyphen = hasHyphen(left);
    const bool rightHyphen = hasHyphen(right);
    if (leftHyphen != rightHyphen)
        return rightHyphen;
    return left < right;
}
