#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QMutex>
#include <QString>
#include <QtGlobal>

// Message handler for the application log: one line per message, appended to
// "log.txt" in the per-user data directory. Failures are silent.
void myMessageOutput(QtMsgType type, const QMessageLogContext& context, const QString& message);

// The line the handler writes, line feed included.
QByteArray formatLogLine(QtMsgType type, const QDateTime& when, const QString& message);

// Path of the application log; the directory is created on demand.
QString applicationLogPath();

// The connection trace: a small "log.txt" beside the executable.
class ALog
{
public:
    static void Out(QString text);
    static QString tracePath();

private:
    static QMutex mutex_;
};
