#include "PingManager.h"

#include <QThreadPool>

#include "PingWrapper.h"

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
    results.clear();
    for (const ServerInfo& server : servers)
        results.insert(server.name, server);

    // One job per record, duplicates included: the finish rule below counts on the surplus. All jobs are made
    // before the first one is handed over: once the pool runs, its threads start processes, allocate and post
    // results alongside this loop, and on a small machine making ten thousand jobs then takes several times as long.
    QVector<PingWrapper*> jobs;
    jobs.reserve(servers.size());
    const unsigned pass = ++m_pass;
    m_jobsLeft = servers.size();
    for (const ServerInfo& server : servers) {
        auto* job = new PingWrapper(server.name, server.ip, true, nullptr);
        connect(
            job, &PingWrapper::pingFinished, this, [this, pass](bool success, double timeMs, QString name, QString ip) {
                onPingFinished(success, timeMs, name, ip);
                if (pass == m_pass && --m_jobsLeft == 0)
                    emit passMeasured();
            });
        jobs.append(job);
    }
    for (PingWrapper* job : qAsConst(jobs))
        pool->start(job, 0);
}

void PingManager::stopPing()
{
    pool->clear();
    pool->waitForDone(stopWaitMs);
    finishedCount = 0;
}

QVector<ServerInfo> PingManager::servers() const
{
    QVector<ServerInfo> list;
    list.reserve(results.size());
    for (const ServerInfo& server : results)
        list.append(server);
    return list;
}

void PingManager::onPingFinished(bool success, double timeMs, QString name, QString ip)
{
    Q_UNUSED(ip)
    if (success) {
        auto it = results.find(name);
        // 0 stands for "not measured", so an answer within a millisecond (a nearby host) is filed as 1.
        if (it != results.end())
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
