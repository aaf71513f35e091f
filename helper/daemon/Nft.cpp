#include "Nft.h"

#include <QProcess>

namespace Nft {

namespace {
// The client waits five seconds for any answer.
constexpr int TimeoutMs = 3000;
} // namespace

bool run(const QString& script, QString& error)
{
    QProcess nft;
    nft.setProcessChannelMode(QProcess::MergedChannels);
    nft.start(QStringLiteral("nft"), {QStringLiteral("-f"), QStringLiteral("-")});
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

} // namespace Nft
