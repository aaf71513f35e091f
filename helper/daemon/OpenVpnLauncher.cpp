#include "OpenVpnLauncher.h"

#include "HelperPaths.h"
#include "ManagementGuard.h"
#include "Nft.h"
#include "OpenVpnArguments.h"
#include "OpenVpnConfigCheck.h"
#include "PeerUid.h"
#include "TrustedFile.h"
#include "TunnelOwner.h"
#include "WireText.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QSaveFile>
#include <QStandardPaths>
#include <QThread>
#include <QVector>

#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <spawn.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {
constexpr qint64 MaxConfigSize = 1 << 20;
constexpr int StopTimeoutMs = 5000;
// The client gives up after five seconds; OpenVPN opens its management port within milliseconds.
constexpr int ManagementWaitMs = 3000;
} // namespace

struct OpenVpnLauncher::Run
{
    QString resolverScript;
    QString resolvConf; // watched while OpenVPN runs
    QString record; // pid and start time, for a daemon that starts again after a crash
    QString config; // the private copy, which holds the private key
    pid_t pid = -1;
    int pidfd = -1;
    int output = -1;
    quint16 port = 0;
    std::mutex mutex;
    std::condition_variable endedChanged;
    bool ended = false;

    ~Run()
    {
        for (int fd : {pidfd, output}) {
            if (fd >= 0)
                ::close(fd);
        }
    }

    void signal(int number) const { ::syscall(SYS_pidfd_send_signal, pidfd, number, nullptr, 0); }
    bool waitEnded(int ms)
    {
        std::unique_lock<std::mutex> lock(mutex);
        return endedChanged.wait_for(lock, std::chrono::milliseconds(ms), [this] { return ended; });
    }
};

namespace {

void logLines(QByteArray& pending, bool flush)
{
    int end;
    while ((end = pending.indexOf('\n')) >= 0 || (flush && !pending.isEmpty())) {
        const QByteArray line = end >= 0 ? pending.left(end) : pending;
        pending.remove(0, end >= 0 ? end + 1 : pending.size());
        qInfo().noquote() << "openvpn:" << WireText::forLog(QString::fromLocal8Bit(line).trimmed());
    }
}

// Runs the up/down script for the daemon: "down" undoes what its last "up" put in force (and
// does nothing when nothing is), "check" writes the tunnel's servers again into a resolver file
// that something replaced.
bool runResolverScript(const QString& script, const QString& type)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("script_type"), type);
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(script, QStringList());
    return process.waitForFinished(StopTimeoutMs) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
}

void restoreResolver(const QString& script)
{
    if (!runResolverScript(script, QStringLiteral("down")))
        qWarning().noquote() << "openvpn: the resolver could not be put back with" << script;
}

QString resolvConfPath()
{
    return QProcessEnvironment::systemEnvironment().value(QStringLiteral("TAVRIN_HELPERD_ROOT"))
        + QStringLiteral("/etc/resolv.conf");
}

// Watches the resolver file and its directory for another program (NetworkManager, a DHCP
// client) writing or replacing the file while the tunnel's servers are in force there.
class ResolverFileWatch
{
public:
    explicit ResolverFileWatch(const QString& path)
        : m_file(QFile::encodeName(path))
        , m_fd(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        if (m_fd < 0)
            return;
        ::inotify_add_watch(m_fd,
                            QFile::encodeName(QFileInfo(path).path()).constData(),
                            IN_CLOSE_WRITE | IN_CREATE | IN_MOVED_TO | IN_DELETE | IN_ONLYDIR);
        watchFile();
    }
    ~ResolverFileWatch()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    int fd() const { return m_fd; }
    // Reads the events that woke us; the file is watched again, as it may be a new one now.
    void drain()
    {
        char buffer[4096];
        while (::read(m_fd, buffer, sizeof buffer) > 0) { }
        watchFile();
    }

private:
    // The file itself too: a bind-mounted file reports its writes only there.
    void watchFile() { ::inotify_add_watch(m_fd, m_file.constData(), IN_CLOSE_WRITE | IN_DONT_FOLLOW); }

    QByteArray m_file;
    int m_fd;
};

// The start time of a process in clock ticks since boot, or empty when it is gone.
QByteArray startTime(qint64 pid)
{
    return PeerUid::processStat(pid).value(19); // field 22 of the line
}

// Follows one OpenVPN until it exits: logs its output, reaps it, lifts the management port's
// reservation and tells the owner the tunnel process is gone.
void watch(const std::shared_ptr<OpenVpnLauncher::Run>& run, TunnelOwner& owner)
{
    ResolverFileWatch resolver(run->resolvConf);
    pollfd fds[3] = {{run->output, POLLIN, 0}, {run->pidfd, POLLIN, 0}, {resolver.fd(), POLLIN, 0}};
    QByteArray pending;
    char buffer[4096];
    for (;;) {
        if (::poll(fds, 3, -1) < 0) {
            if (errno == EINTR)
                continue;
            break;
        }
        if (fds[0].revents) {
            const ssize_t n = ::read(run->output, buffer, sizeof buffer);
            if (n > 0) {
                pending.append(buffer, int(n));
                logLines(pending, false);
            } else if (n == 0 || (errno != EINTR && errno != EAGAIN)) {
                fds[0].fd = -1; // the output is closed; wait for the exit alone
            }
        }
        if (fds[1].revents)
            break;
        if (fds[2].revents) {
            resolver.drain();
            if (!runResolverScript(run->resolverScript, QStringLiteral("check")))
                qWarning().noquote() << "openvpn: the tunnel's DNS servers could not be written again";
        }
    }
    int status = 0;
    while (::waitpid(run->pid, &status, 0) < 0 && errno == EINTR) { }
    for (ssize_t n; (n = ::read(run->output, buffer, sizeof buffer)) > 0;)
        pending.append(buffer, int(n));
    logLines(pending, true);
    qInfo() << "openvpn: pid" << run->pid << "exited"
            << (WIFEXITED(status) ? QStringLiteral("with code %1").arg(WEXITSTATUS(status))
                                  : QStringLiteral("on signal %1").arg(WTERMSIG(status)));
    // Killed, OpenVPN runs no down script: its DNS servers would stay in force without it.
    restoreResolver(run->resolverScript);
    QFile::remove(run->record);
    QFile::remove(run->config);
    QString error;
    if (!Nft::run(ManagementGuard::removeScript(), error))
        qWarning().noquote() << "openvpn: cannot lift the management port's reservation:" << error;
    owner.setHeld(TunnelOwner::OpenVpn, false);
    std::lock_guard<std::mutex> lock(run->mutex);
    run->ended = true;
    run->endedChanged.notify_all();
}

// Starts program with argv in workDir, its output into a pipe of ours, and nothing else of ours
// open in it; the read end of the pipe, or -1 with error.
pid_t spawn(const QString& program, const QStringList& arguments, const QString& workDir, int& output, QString& error)
{
    int pipeFds[2];
    if (::pipe2(pipeFds, O_CLOEXEC) != 0) {
        error = QStringLiteral("no pipe");
        return -1;
    }
    QVector<QByteArray> storage {QFile::encodeName(program)};
    for (const QString& a : arguments)
        storage.append(a.toLocal8Bit());
    QVector<char*> argv;
    for (QByteArray& a : storage)
        argv.append(a.data());
    argv.append(nullptr);
    const QByteArray dir = QFile::encodeName(workDir);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], 1);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], 2);
    posix_spawn_file_actions_addclosefrom_np(&actions, 3);
    posix_spawn_file_actions_addchdir_np(&actions, dir.constData());
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigset_t defaults;
    sigemptyset(&none);
    sigemptyset(&defaults);
    for (int s : {SIGPIPE, SIGTERM, SIGINT, SIGHUP, SIGUSR1, SIGUSR2})
        sigaddset(&defaults, s);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    pid_t pid = -1;
    const int result = ::posix_spawn(&pid, argv.first(), &actions, &attributes, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    ::close(pipeFds[1]);
    if (result != 0) {
        ::close(pipeFds[0]);
        error = QStringLiteral("openvpn cannot be started: %1").arg(QString::fromLocal8Bit(std::strerror(result)));
        return -1;
    }
    ::fcntl(pipeFds[0], F_SETFL, O_NONBLOCK);
    output = pipeFds[0];
    return pid;
}

QString listenerUids(quint16 port)
{
    QStringList uids;
    for (const PeerUid::Peer& listener : PeerUid::listeners(port))
        uids.append(QString::number(listener.uid));
    return uids.join(QStringLiteral(", "));
}

// Whether nobody has bound 127.0.0.1:port, listening or not: we can bind it ourselves.
bool portFree(quint16 port, QString& error)
{
    const int probe = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool free = probe >= 0 && ::bind(probe, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    if (probe >= 0)
        ::close(probe);
    if (!free) {
        const QString listeners = listenerUids(port);
        error = QStringLiteral("management port %1 is in use (%2)")
                    .arg(port)
                    .arg(listeners.isEmpty() ? QStringLiteral("bound, not listening")
                                             : QStringLiteral("uid ") + listeners);
    }
    return free;
}

bool listensItself(pid_t pid, quint16 port)
{
    for (const PeerUid::Peer& listener : PeerUid::listeners(port)) {
        if (PeerUid::holds(pid, listener.inode))
            return true;
    }
    return false;
}

} // namespace

OpenVpnLauncher::OpenVpnLauncher(const QString& stateDir, const QString& resolverScript, TunnelOwner& owner)
    : m_stateDir(stateDir)
    , m_resolverScript(resolverScript)
    , m_owner(owner)
{ }

OpenVpnLauncher::~OpenVpnLauncher()
{
    stop();
}

QString OpenVpnLauncher::recordFile() const
{
    return m_stateDir + QStringLiteral("/openvpn.pid");
}

void OpenVpnLauncher::stopLeftover()
{
    QFile record(recordFile());
    if (!record.open(QIODevice::ReadOnly))
        return;
    const QList<QByteArray> fields = record.readAll().trimmed().split(' ');
    record.close();
    const qint64 pid = fields.value(0).toLongLong();
    // The pid with its start time names that very process, never a later one given the same pid.
    if (pid > 0 && fields.size() == 2 && startTime(pid) == fields.at(1)) {
        qInfo() << "openvpn: stopping pid" << pid << "left by an earlier run";
        ::kill(pid_t(pid), SIGTERM);
        QElapsedTimer clock;
        clock.start();
        while (!startTime(pid).isEmpty() && clock.elapsed() < StopTimeoutMs)
            QThread::msleep(20);
        if (!startTime(pid).isEmpty())
            ::kill(pid_t(pid), SIGKILL);
    }
    restoreResolver(m_resolverScript);
    record.remove();
}

void OpenVpnLauncher::stop()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    stopLocked();
}

void OpenVpnLauncher::stopLocked()
{
    if (!m_run)
        return;
    const std::shared_ptr<Run> run = std::move(m_run);
    if (!run->waitEnded(0)) {
        qInfo() << "openvpn: stopping pid" << run->pid;
        run->signal(SIGTERM);
        if (!run->waitEnded(StopTimeoutMs)) {
            run->signal(SIGKILL);
            run->waitEnded(StopTimeoutMs);
        }
    }
    if (m_watcher->wait(StopTimeoutMs)) {
        m_watcher.reset();
        return;
    }
    // Not gone even after SIGKILL: its watcher keeps the run and goes on waiting for it.
    qWarning() << "openvpn: pid" << run->pid << "does not end";
    [[maybe_unused]] QThread* abandoned = m_watcher.release();
}

bool OpenVpnLauncher::start(const QString& arguments, qint64 callerUid, QString& error)
{
    OpenVpnArguments args;
    if (!args.parse(arguments)) {
        error = QStringLiteral("arguments refused: %1").arg(args.error());
        return false;
    }
    QByteArray config;
    TrustedFile file(args.configPath(), callerUid);
    if (!file.read(MaxConfigSize, config)) {
        error = QStringLiteral("configuration refused: %1").arg(file.error());
        return false;
    }
    OpenVpnConfigCheck check;
    if (!check.check(config)) {
        error = QStringLiteral("configuration refused: %1").arg(check.error());
        return false;
    }
    const QString program = QStandardPaths::findExecutable(QStringLiteral("openvpn"));
    if (program.isEmpty()) {
        error = QStringLiteral("openvpn is not installed");
        return false;
    }

    // Whoever holds the port now would make OpenVPN give up and get the client's credentials
    // instead. A refused start leaves the running OpenVPN alone, unless that one holds the port.
    const quint16 port = args.managementPort();
    std::lock_guard<std::mutex> lock(m_mutex);
    const bool heldByOurs = m_run && m_run->port == port && !m_run->waitEnded(0);
    if (!heldByOurs && !portFree(port, error))
        return false;
    stopLocked();
    if (heldByOurs && !portFree(port, error))
        return false;

    const QString copy = m_stateDir + QStringLiteral("/openvpn.conf");
    QFile out;
    const int fd = HelperPaths::makePrivateDir(m_stateDir) ? TrustedFile::createPrivate(copy) : -1;
    if (fd < 0 || !out.open(fd, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)
        || out.write(config) != config.size() || !out.flush()) {
        if (fd >= 0 && !out.isOpen())
            ::close(fd);
        error = QStringLiteral("cannot write %1").arg(copy);
        return false;
    }
    out.close();

    if (!Nft::run(ManagementGuard::installScript(port, callerUid), error)) {
        error = QStringLiteral("cannot reserve the management port: %1").arg(error);
        return false;
    }

    QStringList argv {QStringLiteral("--config"),
                      copy,
                      QStringLiteral("--management"),
                      QStringLiteral("127.0.0.1"),
                      QString::number(port),
                      QStringLiteral("--management-query-passwords"),
                      QStringLiteral("--script-security"),
                      QStringLiteral("2"),
                      QStringLiteral("--up"),
                      m_resolverScript,
                      QStringLiteral("--down"),
                      m_resolverScript,
                      // The resolver goes back before the device does: queries for the tunnel's
                      // server would otherwise take the default route for a moment.
                      QStringLiteral("--down-pre")};
    // OpenVPN hands its scripts only the variables it sets itself: pass the test root on.
    const QString root = QProcessEnvironment::systemEnvironment().value(QStringLiteral("TAVRIN_HELPERD_ROOT"));
    if (!root.isEmpty())
        argv << QStringLiteral("--setenv") << QStringLiteral("TAVRIN_HELPERD_ROOT") << root;

    auto run = std::make_shared<Run>();
    run->port = port;
    // Relative file names in the configuration mean what they meant beside the original.
    run->pid = spawn(program, argv, QFileInfo(args.configPath()).absolutePath(), run->output, error);
    if (run->pid > 0)
        run->pidfd = int(::syscall(SYS_pidfd_open, run->pid, 0));
    if (run->pid <= 0 || run->pidfd < 0) {
        if (run->pid > 0) {
            ::kill(run->pid, SIGKILL);
            ::waitpid(run->pid, nullptr, 0);
            error = QStringLiteral("cannot follow the started openvpn");
        }
        QString ignored;
        Nft::run(ManagementGuard::removeScript(), ignored);
        return false;
    }
    run->resolverScript = m_resolverScript;
    run->resolvConf = resolvConfPath();
    run->record = recordFile();
    run->config = copy;
    QSaveFile record(run->record);
    if (!record.open(QIODevice::WriteOnly)
        || record.write(QByteArray::number(run->pid) + ' ' + startTime(run->pid) + '\n') < 0 || !record.commit())
        qWarning().noquote() << "openvpn: cannot remember pid" << run->pid << "in" << run->record;
    // Held from now on: the watcher lets go when this OpenVPN ends, however soon that is.
    m_owner.setHeld(TunnelOwner::OpenVpn, true);
    TunnelOwner& owner = m_owner;
    m_watcher.reset(QThread::create([run, &owner] { watch(run, owner); }));
    m_watcher->start();
    m_run = run;
    qInfo() << "openvpn: started pid" << run->pid << "for uid" << callerUid << "management port" << port;

    // The client connects to the management port as soon as we answer and retries only every
    // 100 ms: answering once OpenVPN listens saves it that wait. And it must be OpenVPN that
    // listens there: a socket someone else bound to the port first would make OpenVPN give up
    // and get the client's credentials instead.
    QElapsedTimer clock;
    clock.start();
    bool listening = false;
    while (!(listening = listensItself(run->pid, port)) && clock.elapsed() < ManagementWaitMs && !run->waitEnded(0))
        QThread::msleep(2);
    if (!listening) {
        error = run->waitEnded(0)
            ? QStringLiteral("openvpn ended before it opened management port %1").arg(port)
            : QStringLiteral("openvpn did not open management port %1 within %2 ms").arg(port).arg(ManagementWaitMs);
        stopLocked();
        return false;
    }
    qInfo() << "openvpn: management port open after" << clock.elapsed() << "ms";
    return true;
}
