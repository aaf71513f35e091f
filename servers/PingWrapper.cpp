#include "PingWrapper.h"

#include <QProcess>
#include <QStringList>

namespace {
const int pingWaitMs = 30000;
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
    // The program is found through PATH; a missing one simply fails to start.
    QProcess process;
    process.start(QStringLiteral("ping"), QStringList(), QIODevice::ReadWrite);
    process.waitForFinished(pingWaitMs);
    emit pingFinished(false, 0.0, name, ip);
    // A process still running here is killed when `process` goes out of scope.
}
