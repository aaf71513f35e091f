#include "Nft.h"

#include <QProcess>
#include <QProcessEnvironment>

#include <nftables/libnftables.h>

#include <memory>
#include <mutex>

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
} // namespace

bool run(const QString& script, QString& error)
{
    static const QString program = QProcessEnvironment::systemEnvironment().value(QStringLiteral("TAVRIN_HELPERD_NFT"));
    if (!program.isEmpty())
        return runProgram(program, script, error);

    // The library nft itself is made of, in this process: the same parser and the same transaction, without starting
    // a program (some 20 ms) for each change. One script at a time, as the library keeps some state of its own.
    static std::mutex serial;
    const std::lock_guard<std::mutex> lock(serial);
    const std::unique_ptr<nft_ctx, void (*)(nft_ctx*)> context(nft_ctx_new(NFT_CTX_DEFAULT), nft_ctx_free);
    if (!context) {
        error = QStringLiteral("nft cannot be started");
        return false;
    }
    nft_ctx_buffer_output(context.get());
    nft_ctx_buffer_error(context.get());
    if (nft_run_cmd_from_buffer(context.get(), script.toUtf8().constData()) != 0) {
        error = QStringLiteral("nft failed: %1")
                    .arg(QString::fromLocal8Bit(nft_ctx_get_error_buffer(context.get())).trimmed());
        return false;
    }
    return true;
}

} // namespace Nft
