#include "PingManager.h"

#include <QThreadPool>
#include <algorithm>

#include "PingWrapper.h"
#include "TextOrder.h"

namespace {
const int maxPingThreads = 5;
const int stopWaitMs = 200;
} // namespace

PingManager::PingManager(QObject* parent)
    : QObject(parent)
    , pool(new QThreadPool(this))
{
    pool->setMaxThreadCount(maxPingThreads);
}

void PingManager::pingServers(QVector<ServerInfo> servers)
{
    stopPing();
    // Sorted once, by the names' leading characters as integers: ten thousand insertions into an ordered map, each
    // comparing names, took milliseconds at the end of every sign-in.
    QVector<QString> names;
    names.reserve(servers.size());
    for (const ServerInfo& server : qAsConst(servers))
        names.append(server.name);
    const QVector<int> order = orderByText(names);
    results.clear();
    results.reserve(order.size());
    for (int place = 0; place < order.size(); ++place) {
        // Records of one name follow each other in list order.
        if (place + 1 < order.size() && names.at(order.at(place + 1)) == names.at(order.at(place)))
            continue;
        results.append(servers.at(order.at(place)));
    }

    // One job per record, duplicates included (the finish rule below counts on the surplus), run in order, five at a
    // time. The pool is handed a job only when it has a thread for it: ten thousand jobs made at once took several
    // milliseconds on the main thread and held some megabytes until the pass, minutes long, was through.
    m_queue.clear();
    m_queue.reserve(servers.size());
    for (const ServerInfo& server : qAsConst(servers))
        m_queue.append(qMakePair(server.name, server.ip));
    m_next = 0;
    const unsigned pass = ++m_pass;
    m_jobsLeft = servers.size();
    for (int i = 0; i < pool->maxThreadCount(); ++i)
        startNext(pass);
}

void PingManager::startNext(unsigned pass)
{
    if (m_next >= m_queue.size())
        return;
    const QPair<QString, QString> record = m_queue.at(m_next++);
    auto* job = new PingWrapper(record.first, record.second, true, nullptr);
    connect(job, &PingWrapper::pingFinished, this, [this, pass](bool success, double timeMs, QString name, QString ip) {
        // The next job goes to the pool before this result is counted, so that the pool is idle at the count only
        // when no job of the pass is left, as when they were all queued at once.
        if (pass == m_pass)
            startNext(pass);
        onPingFinished(success, timeMs, name, ip);
        if (pass == m_pass && --m_jobsLeft == 0)
            emit passMeasured();
    });
    pool->start(job, 0);
}

void PingManager::stopPing()
{
    m_queue.clear();
    m_next = 0;
    pool->clear();
    pool->waitForDone(stopWaitMs);
    finishedCount = 0;
}

QVector<ServerInfo> PingManager::servers() const
{
    return results;
}

void PingManager::onPingFinished(bool success, double timeMs, QString name, QString ip)
{
    Q_UNUSED(ip)
    if (success) {
        const auto it
            = std::lower_bound(results.begin(), results.end(), name, [](const ServerInfo& server, const QString& key) {
                  return server.name < key;
              });
        // 0 stands for "not measured", so an answer within a millisecond (a nearby host) is filed as 1.
        if (it != results.end() && it->name == name)
            it->ping = qMax<qint32>(1, static_cast<qint32>(timeMs));
    }

    // The test comes before this result is counted, so a pass of n distinct names ends only
    // with a surplus result (a name listed by several VPN logins) that finds the pool idle.
    const int n = results.size();
    if (n >= 1 && finishedCount >= n && pool->activeThreadCount() == 0) {
        emit pingServersFinished();
        finishedCount = 0;
        return;
    }
    ++finishedCount;
}
