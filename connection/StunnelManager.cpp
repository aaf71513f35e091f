#include "StunnelManager.h"

#include "FreePort.h"
#include "TempLeftovers.h"

#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QThread>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

QByteArray readProcFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The real uid of a running process, -1 when it is gone, has ended and waits to be reaped (an
// ended stunnel's pid file names it until then), or cannot be read.
qint64 realUid(int pid)
{
    const QList<QByteArray> lines = readProcFile(QStringLiteral("/proc/%1/status").arg(pid)).split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith("State:") && (line.contains("zombie") || line.contains("dead")))
            return -1;
        if (line.startsWith("Uid:")) {
            bool ok = false;
            const qint64 uid = line.mid(4).simplified().split(' ').first().toLongLong(&ok);
            return ok ? uid : -1;
        }
    }
    return -1;
}

int refuse(QString* why, const QString& reason)
{
    if (why)
        *why = reason;
    return -1;
}

bool isStunnel(int pid)
{
    const auto named = [](const QString& name) {
        return name == QLatin1String("stunnel4") || name == QLatin1String("stunnel");
    };
    const QString comm = QString::fromLocal8Bit(readProcFile(QStringLiteral("/proc/%1/comm").arg(pid)).trimmed());
    return named(comm)
        || named(QFileInfo(QFileInfo(QStringLiteral("/proc/%1/exe").arg(pid)).symLinkTarget()).fileName());
}

} // namespace

namespace {
// stunnel writes its pid once it runs in the background, well within this.
constexpr int PidPollMs = 50;
constexpr int PidPolls = 100;
// How long a stop waits for a stunnel that has just been started to name itself.
constexpr int StartWaitMs = 2000;
} // namespace

StunnelManager::StunnelManager(QObject* parent)
    : QObject(parent)
    , process(new QProcess(this))
    , program(QStringLiteral("stunnel4"))
    , pidFile(QStringLiteral("/tmp/tavrin-stunnel.pid"))
{
    pidPoll.setInterval(PidPollMs);
    connect(&pidPoll, &QTimer::timeout, this, &StunnelManager::watch);
}

StunnelManager::~StunnelManager()
{
    killProcess();
}

void StunnelManager::setConfigAndRunProcess(const QString& host, int port, const QString& sni)
{
    killProcess();
    localPort = getAvailablePort();
    if (!makeConfigFile(host, port, sni))
        return;
    run();
}

void StunnelManager::removeLeftovers() const
{
    forEachTempLeftover(QLatin1Char('-'), true, [this](const QString& path) {
        // Only a directory that holds nothing but a stunnel configuration is ours to remove.
        const QStringList files = QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        if (path != configDir.path() && (files.isEmpty() || files == QStringList(QStringLiteral("stunnel.conf")))) {
            qDebug() << "Removing a stunnel configuration left by an earlier run:" << QFileInfo(path).fileName();
            QDir(path).removeRecursively();
        }
    });
}

void StunnelManager::restart()
{
    killProcess();
    if (QFileInfo::exists(configFilePath()))
        run();
}

void StunnelManager::run()
{
    const QStringList arguments {configFilePath()};
    qDebug() << "Run stunnel:" << program << "with args:" << arguments;
    process->start(program, arguments, QIODevice::ReadWrite);
    pollsLeft = PidPolls;
    pidPoll.start();
}

// Polled until the stunnel just started has written its pid, then follows that process.
void StunnelManager::watch()
{
    const int pid = ownStunnelPid(nullptr);
    if (pid < 1) {
        if (--pollsLeft <= 0) {
            pidPoll.stop();
            qDebug() << "stunnel wrote no pid: it is not watched";
        }
        return;
    }
    pidPoll.stop();
    pidfd = int(::syscall(SYS_pidfd_open, pid, 0));
    if (pidfd < 0)
        return;
    exitNotifier = new QSocketNotifier(pidfd, QSocketNotifier::Read, this);
    connect(exitNotifier, &QSocketNotifier::activated, this, [this] {
        qDebug() << "stunnel has stopped";
        unwatch();
        emit stopped();
    });
}

void StunnelManager::unwatch()
{
    pidPoll.stop();
    delete exitNotifier;
    exitNotifier = nullptr;
    if (pidfd >= 0)
        ::close(pidfd);
    pidfd = -1;
}

int StunnelManager::getPort() const
{
    return localPort;
}

int StunnelManager::getAvailablePort()
{
    return findFreeLocalPort();
}

QString StunnelManager::configFilePath() const
{
    return configDir.path() + QStringLiteral("/stunnel.conf");
}

bool StunnelManager::makeConfigFile(const QString& host, int port, const QString& sni)
{
    if (!configDir.isValid())
        return false;
    QFile file(configFilePath());
    const bool opened = file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    const QStringList lines {
        QStringLiteral("sslVersion = all"),
        QStringLiteral("socket = l:TCP_NODELAY=1"),
        QStringLiteral("socket = r:TCP_NODELAY=1"),
        QStringLiteral("pid =%1").arg(pidFile),
        QStringLiteral("[openvpn]"),
        QStringLiteral("client = yes"),
        QStringLiteral("sni = %1").arg(sni),
        QStringLiteral("accept = 127.0.0.1:%1").arg(localPort),
        QStringLiteral("connect = %1:%2").arg(host).arg(port),
    };
    for (const QString& line : lines)
        file.write((line + QStringLiteral("\r\n")).toUtf8());
    file.close();
    qDebug() << "Stunnel config file: " << file.fileName();
    return opened;
}

void StunnelManager::killProcess()
{
    // A stunnel started a moment ago may not have written its pid yet (a connection cancelled while its
    // configuration is written): wait for it briefly, or it would be left running with nobody to stop it.
    if (pidPoll.isActive()) {
        QElapsedTimer waited;
        waited.start();
        while (ownStunnelPid(nullptr) < 1 && waited.elapsed() < StartWaitMs
               && !(process->state() == QProcess::NotRunning && process->exitCode() != 0))
            QThread::msleep(10);
    }
    unwatch();
    QString why;
    const int pid = ownStunnelPid(&why);
    if (pid < 1) {
        qDebug().noquote() << "Can't kill stunnel." << why;
        return;
    }
    QProcess::execute(QStringLiteral("kill"), {QString::number(pid)});
}

// The pid file lies in /tmp, where any local user may put one: only a regular file of ours that
// names a stunnel of ours is believed, so that nobody can make us signal another of our processes.
int StunnelManager::ownStunnelPid(QString* why) const
{
    const int fd = ::open(QFile::encodeName(pidFile).constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0 && errno == ELOOP) {
        return refuse(why, QStringLiteral("The pid file is a symbolic link: %1").arg(pidFile));
    }
    int pid = 0;
    if (fd >= 0) {
        struct stat info
        { };
        const bool stated = ::fstat(fd, &info) == 0;
        char text[32] = {};
        const ssize_t n
            = stated && S_ISREG(info.st_mode) && info.st_uid == ::getuid() ? ::read(fd, text, sizeof text - 1) : -1;
        ::close(fd);
        if (n < 0) {
            return refuse(why, QStringLiteral("The pid file is not a regular file of this user: %1").arg(pidFile));
        }
        pid = QByteArray(text, int(n)).split('\n').first().trimmed().toInt();
    }
    if (pid < 1) {
        return refuse(why, QStringLiteral("Invalid pid."));
    }
    if (realUid(pid) != qint64(::getuid())) {
        return refuse(why, QStringLiteral("Process %1 is gone or belongs to another user.").arg(pid));
    }
    if (!isStunnel(pid)) {
        return refuse(why, QStringLiteral("Process %1 is not stunnel.").arg(pid));
    }
    return pid;
}
