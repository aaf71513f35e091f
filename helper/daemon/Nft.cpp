#include "Nft.h"

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>

#include <nftables/libnftables.h>

#include <mutex>

#include <fcntl.h>
#include <sys/socket.h>

namespace Nft {

namespace {
// The client waits five seconds for any answer.
constexpr int TimeoutMs = 3000;

// A stand-in for nft that the daemon's tests record calls with: fed the script on `-f -`.
bool runProgram(const QString& program, const QString& script, QString& error)
{
    QProcess nft;
    nft.setProcessChannelMode(QProcess::MergedChannels);
    nft.start(program, {QStringLiteral("-f"), QStringLiteral("-")});
    if (!nft.waitForStarted(TimeoutMs)) {
        error = QStringLiteral("nft cannot be started: %1").arg(nft.errorString());
        return false;
    }
    nft.write(script.toUtf8());
    nft.closeWriteChannel();
    if (!nft.waitForFinished(TimeoutMs)) {
        nft.kill();
        nft.waitForFinished();
        error = QStringLiteral("nft did not finish");
        return false;
    }
    if (nft.exitStatus() != QProcess::NormalExit || nft.exitCode() != 0) {
        error = QStringLiteral("nft failed: %1").arg(QString::fromLocal8Bit(nft.readAll()).trimmed());
        return false;
    }
    return true;
}
// The library's netlink socket is not closed on exec: the programs the daemon starts (the resolver script, dpkg) have
// no use for it.
void closeNetlinkOnExec()
{
    const QStringList descriptors = QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System);
    for (const QString& name : descriptors) {
        const int fd = name.toInt();
        int domain = 0;
        socklen_t length = sizeof(domain);
        if (::getsockopt(fd, SOL_SOCKET, SO_DOMAIN, &domain, &length) != 0 || domain != AF_NETLINK)
            continue;
        const int flags = ::fcntl(fd, F_GETFD);
        if (flags >= 0)
            ::fcntl(fd, F_SETFD, flags | FD_CLOEXEC);
    }
}
} // namespace

bool run(const QString& script, QString& error)
{
    static const QString program = QProcessEnvironment::systemEnvironment().value(QStringLiteral("TAVRIN_HELPERD_NFT"));
    if (!program.isEmpty())
        return runProgram(program, script, error);

    // The library nft itself is made of, in this process: the same parser and the same transaction, without starting
    // a program (some 20 ms) for each change. One context for the daemon's life, made with its first script (at
    // start): the library opens its netlink socket then, and ends the process if it cannot, which a daemon that
    // cannot set rules should do before it serves anyone rather than later, in the middle of a request.
    static std::mutex serial;
    const std::lock_guard<std::mutex> lock(serial);
    static nft_ctx* const context = [] {
        nft_ctx* made = nft_ctx_new(NFT_CTX_DEFAULT);
        nft_ctx_buffer_output(made);
        nft_ctx_buffer_error(made);
        closeNetlinkOnExec();
        return made;
    }();
    const bool applied = nft_run_cmd_from_buffer(context, script.toUtf8().constData()) == 0;
    // Taking the buffers empties them for the next script.
    nft_ctx_get_output_buffer(context);
    const QString errors = QString::fromLocal8Bit(nft_ctx_get_error_buffer(context)).trimmed();
    if (!applied) {
        error = QStringLiteral("nft failed: %1").arg(errors);
        return false;
    }
    return true;
}

} // namespace Nft
