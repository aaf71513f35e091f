#include "HelperPaths.h"
#include "HelperServer.h"
#include "RequestHandler.h"

#include "HelperWire.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

int signalPipe[2] = {-1, -1};

void onSignal(int number)
{
    const char byte = char(number);
    [[maybe_unused]] const ssize_t n = ::write(signalPipe[1], &byte, 1);
}

// Runs the installed daemon in this process's place, with the same arguments; returns only when
// that fails.
void restartAs(const QString& program, char* argv[])
{
    const QByteArray path = QFile::encodeName(program);
    argv[0] = const_cast<char*>(path.constData());
    ::execv(path.constData(), argv);
    qCritical().noquote() << "cannot restart as" << program << ":" << ::strerror(errno);
}

} // namespace

int main(int argc, char* argv[])
{
    qSetMessagePattern(QStringLiteral("%{time yyyy-MM-dd hh:mm:ss.zzz} %{type}: %{message}"));
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tavrin-helperd"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Privileged helper of the Tavrin VPN client."));
    parser.addHelpOption();
    const QCommandLineOption portOption(QStringList {QStringLiteral("p"), QStringLiteral("port")},
                                        QStringLiteral("TCP port on 127.0.0.1 (default %1, or $%2).")
                                            .arg(HelperWire::DefaultPort)
                                            .arg(QLatin1String(HelperWire::PortEnvironmentVariable)),
                                        QStringLiteral("port"));
    const QCommandLineOption timeoutOption(QStringLiteral("request-timeout"),
                                           QStringLiteral("Milliseconds a client has to send its request."),
                                           QStringLiteral("ms"),
                                           QStringLiteral("3000"));
    parser.addOption(portOption);
    parser.addOption(timeoutOption);
    parser.process(app);

    QString portText = QProcessEnvironment::systemEnvironment().value(
        QLatin1String(HelperWire::PortEnvironmentVariable), QString::number(HelperWire::DefaultPort));
    if (parser.isSet(portOption))
        portText = parser.value(portOption);
    bool ok = false;
    const uint port = portText.toUInt(&ok);
    const int timeoutMs = parser.value(timeoutOption).toInt();
    if (!ok || port > 65535 || timeoutMs <= 0) {
        qCritical().noquote() << "bad port or time-out:" << portText << parser.value(timeoutOption);
        return 2;
    }

    // Stop cleanly on SIGTERM and SIGINT, so that the OpenVPN we started goes with us. SIGHUP stops
    // the same way and then runs the installed daemon, as an update without systemd asks.
    if (::pipe2(signalPipe, O_CLOEXEC) != 0)
        return 1;
    bool restart = false;
    QSocketNotifier notifier(signalPipe[0], QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &app, [&app, &restart] {
        char byte = 0;
        [[maybe_unused]] const ssize_t n = ::read(signalPipe[0], &byte, 1);
        restart = byte == SIGHUP;
        qInfo() << (restart ? "restarting on SIGHUP" : "stopping on a signal");
        app.quit();
    });
    std::signal(SIGTERM, onSignal);
    std::signal(SIGINT, onSignal);
    std::signal(SIGHUP, onSignal);
    std::signal(SIGPIPE, SIG_IGN);

    const HelperPaths paths = HelperPaths::fromEnvironment();
    if (!HelperPaths::makePrivateDir(paths.stateDir)) {
        qCritical().noquote() << "cannot create the state directory" << paths.stateDir;
        return 1;
    }
    RequestHandler handler(paths);
    // What an earlier run left in force is settled before the first request is taken.
    handler.restoreAtStart();
    HelperServer server(&handler, timeoutMs);
    if (!server.listen(quint16(port)))
        return 1;
    const int status = app.exec();
    server.finish();
    handler.stopOpenVpn();
    if (restart) {
        const QString installed = QFileInfo(paths.installedDaemon).isExecutable()
            ? paths.installedDaemon
            : QCoreApplication::applicationFilePath();
        qInfo().noquote() << "restarting as" << installed;
        restartAs(installed, argv);
        return 1;
    }
    return status;
}
