#include "PingWrapper.h"

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

extern char** environ;

namespace {
const int pingWaitMs = 30000;
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

// Starts "ping" through PATH with no arguments, its standard streams on /dev/null.
// posix_spawnp starts the child without copying this process's memory map, which keeps
// thousands of jobs from stalling a large client while they start.
pid_t startPing()
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int fd = 0; fd <= 2; ++fd)
        posix_spawn_file_actions_addopen(&actions, fd, "/dev/null", O_RDWR, 0);
    char program[] = "ping";
    char* argv[] = {program, nullptr};
    pid_t pid = -1;
    const int result = posix_spawnp(&pid, program, &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    return result == 0 ? pid : -1;
}

// Waits for the child for at most timeoutMs, then kills it; always reaps it.
void waitForPing(pid_t pid, int timeoutMs)
{
    const int pidfd = int(::syscall(SYS_pidfd_open, pid, 0));
    if (pidfd >= 0) {
        pollfd fd {pidfd, POLLIN, 0};
        int ready;
        do {
            ready = ::poll(&fd, 1, timeoutMs);
        } while (ready < 0 && errno == EINTR);
        ::close(pidfd);
        if (ready == 0)
            ::kill(pid, SIGKILL);
    } else {
        // Kernels without pidfd: poll the child's state.
        for (int waited = 0; waited < timeoutMs; waited += 10) {
            if (::waitpid(pid, nullptr, WNOHANG) == pid)
                return;
            ::usleep(10000);
        }
        ::kill(pid, SIGKILL);
    }
    while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) { }
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
    // A missing program simply fails to start; the result is reported all the same.
    const pid_t pid = startPing();
    if (pid > 0)
        waitForPing(pid, pingWaitMs);
    emit pingFinished(false, 0.0, name, ip);
}
