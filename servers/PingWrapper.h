#pragma once

#include <QObject>
#include <QRunnable>
#include <QString>

// One latency job for one server, run on the ping manager's pool (which deletes it afterwards): a few ICMP echoes
// through the system's "ping" program, the mean round trip in milliseconds. A missing program, an address that is
// not a plain IPv4/IPv6 address, a host that does not answer or a program that overruns its time is a failed
// measurement with a time of 0.
class PingWrapper : public QObject, public QRunnable
{
    Q_OBJECT

public:
    PingWrapper(QString name, QString ip, bool option, QObject* parent);

    void run() override;

signals:
    void pingFinished(bool success, double timeMs, QString name, QString ip);

private:
    QString name;
    QString ip;
    // Kept for the manager's interface; the job does not read it.
    bool option;
};
