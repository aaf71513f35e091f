#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QMutex>
#include <QString>
#include <QtGlobal>

#include <atomic>

// Message handler for the application log: one line per message, appended to
// "log.txt" in the per-user data directory. The file is created owner-only and,
// once it passes applicationLogLimit, moved to "log.txt.1" to start afresh.
// Failures are silent.
void myMessageOutput(QtMsgType type, const QMessageLogContext& context, const QString& message);

// The line the handler writes, line feed included.
QByteArray formatLogLine(QtMsgType type, const QDateTime& when, const QString& message);

// Every text bound for a log file passes here: the values of credential query items
// (login, pass, ...) become "***" and PEM blocks are dropped.
QString redactLogText(const QString& text);

// Path of the application log; the directory is created on demand, owner-only.
QString applicationLogPath();

// Size in bytes past which the application log is rotated. Tests lower it.
extern std::atomic<qint64> applicationLogLimit;

// Takes group and other access away from the log files and the log directory
// left by earlier runs. Called once at start.
void restrictLogPermissions();

// The connection trace: a small "log.txt" beside the executable.
class ALog
{
public:
    static void Out(QString text);
    static QString tracePath();

private:
    static QMutex mutex_;
};
