#pragma once

#include <QObject>
#include <QPair>
#include <QString>
#include <QVector>

#include "ServerInfo.h"

class QThreadPool;

// Measures the latency of every server of a list on a small pool of threads and files
// the results by server name. Lives on the main thread; results arrive queued.
class PingManager : public QObject
{
    Q_OBJECT

public:
    explicit PingManager(QObject* parent = nullptr);

    // Starts a new pass: stops the previous one, then queues one job per record.
    void pingServers(QVector<ServerInfo> servers);
    // Drops queued jobs and waits at most 200 ms for running ones; late results still arrive.
    void stopPing();
    // The records of the current pass, one per name, in name order.
    QVector<ServerInfo> servers() const;

signals:
    void pingServersFinished();
    // Every job of the current pass has reported; unlike the signal above, whatever names the list holds.
    void passMeasured();

public slots:
    void onPingFinished(bool success, double timeMs, QString name, QString ip);

private:
    // One record per name, the last of the list's records of that name, in name order (QString's comparison).
    QVector<ServerInfo> results;
    QThreadPool* pool;
    int finishedCount = 0;
    // Hands the pool the next record of the pass, if there is one.
    void startNext(unsigned pass);

    // The pass that results are counted for, and how many of its jobs have yet to report.
    unsigned m_pass = 0;
    int m_jobsLeft = 0;
    // The names and addresses of the pass's records, in order, and the next one to hand out.
    QVector<QPair<QString, QString>> m_queue;
    int m_next = 0;
};
