#include "ALog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutexLocker>
#include <QRegularExpression>
#include <QStandardPaths>

#include <fcntl.h>
#include <unistd.h>

QMutex ALog::mutex_;

std::atomic<qint64> applicationLogLimit {10 * 1024 * 1024};

namespace {

const QFileDevice::Permissions ownerOnlyFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
const QFileDevice::Permissions ownerOnlyDirectory = ownerOnlyFile | QFileDevice::ExeOwner;
const QFileDevice::Permissions groupOrOther = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup
    | QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;

// Serialises rotations only; writing takes no lock.
QMutex rotationMutex;

void restrictToOwner(const QString& path, QFileDevice::Permissions ownerOnly)
{
    if (QFile::permissions(path) & groupOrOther)
        QFile::setPermissions(path, ownerOnly);
}

// Creates the file owner-only from the start: Qt 5 cannot pass a mode to the creating open, and
// changing it afterwards leaves a moment in which another user may open the file and keep it open.
bool openForAppend(QFile& file, const QString& path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0)
        return false;
    if (file.open(fd, QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle))
        return true;
    ::close(fd);
    return false;
}

void rotate(const QString& path)
{
    QMutexLocker lock(&rotationMutex);
    // Several threads may find the file full at once; only the first moves it.
    if (QFileInfo(path).size() <= applicationLogLimit)
        return;
    const QString older = path + QStringLiteral(".1");
    QFile::remove(older);
    QFile::rename(path, older);
}

} // namespace

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

QString redactLogText(const QString& text)
{
    // Qt shows a URL's query with blanks decoded, so a value runs to the next item, the fragment, a quote or
    // the end of the line; '&', '#' and quotes inside a value are always percent-encoded.
    static const QRegularExpression credential(
        QStringLiteral(R"(([?&](?:login|pass|passwd|password|pwd|secret|token|key)=)[^&#"<>\n]*)"),
        QRegularExpression::CaseInsensitiveOption);
    // A block cut short (a truncated message) is dropped to the end of the text.
    static const QRegularExpression pem(QStringLiteral(R"(-----BEGIN [^\n-]*-----.*?(?:-----END [^\n-]*-----|$))"),
                                        QRegularExpression::DotMatchesEverythingOption);
    QString safe = text;
    if (safe.contains(QLatin1Char('=')))
        safe.replace(credential, QStringLiteral("\\1***"));
    if (safe.contains(QLatin1String("-----BEGIN ")))
        safe.replace(pem, QStringLiteral("[PEM block removed]"));
    return safe;
}

QString applicationLogPath()
{
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::DataLocation);
    if (!QFileInfo::exists(dir) && QDir().mkpath(dir))
        QFile::setPermissions(dir, ownerOnlyDirectory);
    return dir + QStringLiteral("/log.txt");
}

void restrictLogPermissions()
{
    const QString log = applicationLogPath();
    restrictToOwner(QFileInfo(log).absolutePath(), ownerOnlyDirectory);
    for (const QString& file : {log, log + QStringLiteral(".1"), ALog::tracePath()})
        restrictToOwner(file, ownerOnlyFile);
}

void myMessageOutput(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    Q_UNUSED(context)
    const QByteArray line = formatLogLine(type, QDateTime::currentDateTime(), redactLogText(message));
    // One unbuffered append per message: lines from several threads never mix
    // inside a line, and the file may be removed at any time.
    const QString path = applicationLogPath();
    QFile file;
    if (!openForAppend(file, path))
        return;
    file.write(line);
    const bool full = file.size() > applicationLogLimit;
    file.close();
    if (full)
        rotate(path);
}

QString ALog::tracePath()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/log.txt");
}

void ALog::Out(QString text)
{
    QMutexLocker lock(&mutex_);
    QFile file;
    if (!openForAppend(file, tracePath()))
        return;
    QByteArray line = QDateTime::currentDateTime().toString(QStringLiteral("[hh:mm:ss] ")).toUtf8();
    line += redactLogText(text).toUtf8();
    line += '\n';
    file.write(line);
}
