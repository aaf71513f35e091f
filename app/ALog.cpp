#include "ALog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMutexLocker>
#include <QStandardPaths>

QMutex ALog::mutex_;

QByteArray formatLogLine(QtMsgType type, const QDateTime& when, const QString& message)
{
    const char* tag = "";
    switch (type) {
    case QtDebugMsg:
        tag = "DBG";
        break;
    case QtWarningMsg:
        tag = "WRN";
        break;
    case QtCriticalMsg:
        tag = "CRT";
        break;
    case QtFatalMsg:
        tag = "FTL";
        break;
    case QtInfoMsg:
        break;
    }
    QByteArray line = when.toString(QStringLiteral("[dd.MM.yyyy hh:mm:ss.zzz] ")).toUtf8();
    line += tag;
    line += ' ';
    line += message.toUtf8();
    line += '\n';
    return line;
}

QString applicationLogPath()
{
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::DataLocation);
    QDir().mkpath(dir);
    return dir + QStringLiteral("/log.txt");
}

void myMessageOutput(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    Q_UNUSED(context)
    const QByteArray line = formatLogLine(type, QDateTime::currentDateTime(), message);
    // One unbuffered append per message: lines from several threads never mix
    // inside a line, and the file may be removed at any time.
    QFile file(applicationLogPath());
    if (!file.open(QIODevice::Append | QIODevice::Text | QIODevice::Unbuffered))
        return;
    file.write(line);
    file.close();
}

QString ALog::tracePath()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/log.txt");
}

void ALog::Out(QString text)
{
    QMutexLocker lock(&mutex_);
    QFile file(tracePath());
    if (!file.open(QIODevice::Append | QIODevice::Text))
        return;
    const QDateTime now = QDateTime::currentDateTime();
    file.seek(file.size());
    QByteArray line = now.toString(QStringLiteral("[hh:mm:ss] ")).toUtf8();
    line += text.toUtf8();
    line += '\n';
    file.write(line);
    file.close();
}
