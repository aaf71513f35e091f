#include "PingWrapper.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QRegularExpression>
#include <QVector>
#include <QtGlobal>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
// Three echoes 50 ms apart, a second for the last answer and two seconds in all: a location that answers costs
// about 0.1 s plus its round trip, so five jobs at a time get through a thousand locations well within a minute.
const char* const pingArguments[] = {"-n", "-c", "3", "-i", "0.05", "-W", "1", "-w", "2", "--"};
// The program's own deadline is two seconds; past this it is killed and the measurement fails.
const int hardTimeoutMs = 3000;
// iputils ping prints a few hundred bytes; anything beyond this is not its output.
const int maxOutput = 64 * 1024;
// How much nicer than the rest of the program the pool's threads, and so the processes they start, run.
const int pingNicenessStep = 10;
const int maxNiceness = 19;

// A pass starts thousands of short processes back to back; at the program's priority they and their threads would
// take the processor from the interface, which at that moment is building its pages from the new list.
void lowerThreadPriority()
{
    thread_local bool lowered = false;
    if (lowered)
        return;
    lowered = true;
    const id_t thread = id_t(::syscall(SYS_gettid));
    errno = 0;
    const int niceness = ::getpriority(PRIO_PROCESS, thread);
    if (errno == 0)
        ::setpriority(PRIO_PROCESS, thread, qMin(niceness + pingNicenessStep, maxNiceness));
}

struct PingProcess
{
    pid_t pid = -1;
    int output = -1;
};

// Starts "ping" through PATH on the address, in a process group of its own, with only PATH and the C locale in its
// environment and its standard output on a pipe. posix_spawnp starts the child without copying this process's
// memory map, which keeps thousands of jobs from stalling a large client while they start.
PingProcess startPing(const QByteArray& address)
{
    int pipeFds[2];
    if (::pipe2(pipeFds, O_CLOEXEC) != 0)
        return {};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], 1);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);

    QByteArray path = "PATH=" + qgetenv("PATH");
    char locale[] = "LC_ALL=C";
    char* environment[] = {path.data(), locale, nullptr};
    char program[] = "ping";
    QVector<char*> argv {program};
    QVector<QByteArray> arguments;
    for (const char* argument : pingArguments)
        arguments.append(QByteArray(argument));
    arguments.append(address);
    for (QByteArray& argument : arguments)
        argv.append(argument.data());
    argv.append(nullptr);

    PingProcess process;
    if (posix_spawnp(&process.pid, program, &actions, &attributes, argv.data(), environment) != 0)
        process.pid = -1;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    ::close(pipeFds[1]);
    if (process.pid > 0)
        process.output = pipeFds[0];
    else
        ::close(pipeFds[0]);
    return process;
}

// Reads the child's output until it closes it or the time is up, kills its process group when the time ran out, and
// always reaps it. Answers whether it ended on its own (with any status: a partial loss still carries answers).
bool collect(const PingProcess& process, QByteArray* output)
{
    QElapsedTimer clock;
    clock.start();
    bool timedOut = false;
    char buffer[4096];
    for (;;) {
        const qint64 left = hardTimeoutMs - clock.elapsed();
        if (left <= 0) {
            timedOut = true;
            break;
        }
        pollfd fd {process.output, POLLIN, 0};
        const int ready = ::poll(&fd, 1, int(left));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0) {
            timedOut = ready == 0;
            break;
        }
        const ssize_t got = ::read(process.output, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        if (output->size() < maxOutput)
            output->append(buffer, int(qMin<ssize_t>(got, maxOutput - output->size())));
    }
    ::close(process.output);
    if (timedOut)
        ::kill(-process.pid, SIGKILL);
    // The output may close before the program ends: it keeps the rest of its time, then it is killed too.
    int status = 0;
    for (;;) {
        const pid_t reaped = ::waitpid(process.pid, &status, timedOut ? 0 : WNOHANG);
        if (reaped == process.pid)
            break;
        if (reaped < 0 && errno != EINTR)
            return false;
        if (reaped == 0 && clock.elapsed() >= hardTimeoutMs) {
            timedOut = true;
            ::kill(-process.pid, SIGKILL);
        } else if (reaped == 0) {
            ::usleep(5000);
        }
    }
    return !timedOut && WIFEXITED(status);
}

// The mean round trip that ping's output reports, or a negative value when it reports none.
double parseOutput(const QByteArray& output)
{
    const QString text = QString::fromLatin1(output);
    // "rtt min/avg/max/mdev = 0.057/0.060/0.064/0.003 ms" (busybox: "round-trip min/avg/max = ...").
    static const QRegularExpression summary(
        QStringLiteral("min/avg/max(?:/[a-z]+)? = [0-9.]+/([0-9]+(?:\\.[0-9]+)?)/[0-9.]+"));
    // "64 bytes from 127.0.0.1: icmp_seq=1 ttl=64 time=0.064 ms", one line per answer.
    static const QRegularExpression reply(QStringLiteral("bytes from .* time[=<]([0-9]+(?:\\.[0-9]+)?) ?ms"));
    double timeMs = -1.0;
    const QRegularExpressionMatch mean = summary.match(text);
    if (mean.hasMatch()) {
        timeMs = mean.captured(1).toDouble();
    } else {
        double sum = 0.0;
        int answers = 0;
        for (auto it = reply.globalMatch(text); it.hasNext(); ++answers)
            sum += it.next().captured(1).toDouble();
        if (answers > 0)
            timeMs = sum / answers;
    }
    // No answer can take longer than the job waits for it.
    return timeMs >= 0.0 && timeMs <= hardTimeoutMs ? timeMs : -1.0;
}
} // namespace

PingWrapper::PingWrapper(QString serverName, QString serverIp, bool pingOption, QObject* parent)
    : QObject(parent)
    , name(std::move(serverName))
    , ip(std::move(serverIp))
    , option(pingOption)
{
    setAutoDelete(true);
}

void PingWrapper::run()
{
    lowerThreadPriority();
    double timeMs = -1.0;
    // The address comes from the service: only a plain address may reach the command line, never an option.
    QHostAddress address;
    if (address.setAddress(ip.trimmed()) && !address.isNull()) {
        const PingProcess process = startPing(address.toString().toLatin1());
        QByteArray output;
        if (process.pid > 0 && collect(process, &output))
            timeMs = parseOutput(output);
    }
    if (timeMs < 0.0)
        emit pingFinished(false, 0.0, name, ip);
    else
        emit pingFinished(true, timeMs, name, ip);
}
