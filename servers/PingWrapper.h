#pragma once

#include <QObject>
#include <QRunnable>
#include <QString>

// One latency job for one server, run on the ping manager's pool (which deletes it afterwards).
// For now the job only starts the system's "ping" program without arguments and reports a
// failed measurement; a real measurement replaces the body of run() and nothing else.
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
    // Reserved for a real measurement; the current job does not read it.
    bool option;
};
