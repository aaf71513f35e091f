// Time from Connection::connect to "connected" against OpenVPN started by hand with the same
// configuration and server: from its hold release on the management interface to its CONNECTED
// state (OpenVPN's own work, the reference of the goal), and from its start until its
// "Initialization Sequence Completed". Runs in the network namespaces of the e2e tests; needs root
// and /dev/net/tun.

#include "BenchGoal.h"
#include "E2eLab.h"

#include "Connection.h"
#include "MakeOVPNFile.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QLocalSocket>
#include <QProcess>
#include <QTimer>
#include <QVector>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {

constexpr int Rounds = 5;

double median(QVector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.at(v.size() / 2);
}

bool waitFor(const std::function<bool()>& done, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeoutMs)
            return false;
        QEventLoop loop;
        QTimer::singleShot(5, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}

double engineRound(E2eLab& lab, const QString& configPath)
{
    Connection connection;
    bool up = false;
    bool down = false;
    QObject::connect(&connection, &Connection::connected, [&up] { up = true; });
    QObject::connect(&connection, &Connection::disconnected, [&down] { down = true; });
    ServerInfo server;
    server.protocol = OpenVpnUdp;
    QElapsedTimer clock;
    clock.start();
    connection.connect(
        server, QLatin1String(E2eLab::User), QLatin1String(E2eLab::Password), configPath, ProxySetting());
    if (!waitFor([&up] { return up; }, 30000))
        return -1;
    const double ms = clock.nsecsElapsed() / 1e6;
    connection.disconnect(false);
    waitFor([&down] { return down; }, 15000);
    waitFor([&lab] { return lab.processesInClient("openvpn") == 0; }, 15000);
    return ms;
}

QStringList rawArguments(E2eLab& lab, const QString& configPath, const QString& credentials)
{
    return {QStringLiteral("--config"),
            configPath,
            QStringLiteral("--auth-user-pass"),
            credentials,
            QStringLiteral("--script-security"),
            QStringLiteral("2"),
            QStringLiteral("--up"),
            QStringLiteral(TAVRIN_RESOLVER_SCRIPT),
            QStringLiteral("--down"),
            QStringLiteral(TAVRIN_RESOLVER_SCRIPT),
            QStringLiteral("--setenv"),
            QStringLiteral("TAVRIN_HELPERD_ROOT"),
            lab.dir() + QStringLiteral("/root")};
}

void stop(QProcess& openvpn)
{
    openvpn.terminate();
    if (!openvpn.waitForFinished(10000))
        openvpn.kill();
    openvpn.waitForFinished();
}

// OpenVPN held at its start: from "hold release" to the CONNECTED state on its management socket.
double heldRound(E2eLab& lab, const QString& configPath, const QString& credentials)
{
    const QString socketPath = lab.dir() + QStringLiteral("/raw-management");
    QFile::remove(socketPath);
    QProcess openvpn;
    openvpn.setProcessChannelMode(QProcess::MergedChannels);
    openvpn.start(E2eLab::openvpnProgram(),
                  rawArguments(lab, configPath, credentials)
                      << QStringLiteral("--management") << socketPath << QStringLiteral("unix")
                      << QStringLiteral("--management-hold"));
    QLocalSocket management;
    const bool attached = waitFor(
        [&] {
            if (management.state() == QLocalSocket::UnconnectedState)
                management.connectToServer(socketPath);
            return management.state() == QLocalSocket::ConnectedState || openvpn.state() == QProcess::NotRunning;
        },
        10000);
    QByteArray said;
    bool up = false;
    QElapsedTimer clock;
    if (attached && management.state() == QLocalSocket::ConnectedState) {
        management.write("state on\n");
        clock.start();
        management.write("hold release\n");
        waitFor(
            [&] {
                said += management.readAll();
                up = said.contains(",CONNECTED,");
                return up || openvpn.state() == QProcess::NotRunning;
            },
            30000);
    }
    const double ms = up ? clock.nsecsElapsed() / 1e6 : -1;
    stop(openvpn);
    return ms;
}

double rawRound(E2eLab& lab, const QString& configPath, const QString& credentials)
{
    QProcess openvpn;
    openvpn.setProcessChannelMode(QProcess::MergedChannels);
    QByteArray output;
    QElapsedTimer clock;
    clock.start();
    openvpn.start(E2eLab::openvpnProgram(), rawArguments(lab, configPath, credentials));
    const bool ok = waitFor(
        [&] {
            output += openvpn.readAll();
            return output.contains("Initialization Sequence Completed") || openvpn.state() == QProcess::NotRunning;
        },
        30000);
    const double ms = clock.nsecsElapsed() / 1e6;
    const bool completed = ok && output.contains("Initialization Sequence Completed");
    stop(openvpn);
    return completed ? ms : -1;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QString missing = E2eLab::missingPrerequisite();
    if (!missing.isEmpty()) {
        std::fprintf(stderr, "bench_connection_e2e: cannot run: %s\n", qPrintable(missing));
        return 77;
    }
    qSetMessagePattern(QStringLiteral("%{if-warning}%{message}%{endif}%{if-critical}%{message}%{endif}"));
    E2eLab lab;
    if (!lab.start()) {
        std::fprintf(stderr, "bench_connection_e2e: %s\n", qPrintable(lab.error()));
        return 1;
    }

    MakeOVPNFile file;
    lab.writeClientConfig(file, QStringLiteral("udp"));

    const QString credentials = lab.dir() + QStringLiteral("/credentials");
    QFile creds(credentials);
    creds.open(QIODevice::WriteOnly);
    creds.write(QByteArray(E2eLab::User) + '\n' + E2eLab::Password + '\n');
    creds.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    creds.close();

    QVector<double> engine;
    QVector<double> raw;
    QVector<double> held;
    for (int i = 0; i < Rounds; ++i) {
        // Interleaved, so that drift on a busy machine hits all alike.
        const double e = engineRound(lab, file.configFileName);
        const double r = rawRound(lab, file.configFileName, credentials);
        const double h = heldRound(lab, file.configFileName, credentials);
        std::printf(
            "round %d: engine %.1f ms, raw openvpn %.1f ms, hold release to CONNECTED %.1f ms\n", i + 1, e, r, h);
        if (e < 0 || r < 0 || h < 0) {
            std::fprintf(stderr, "bench_connection_e2e: a connection did not come up\n");
            return 1;
        }
        engine << e;
        raw << r;
        held << h;
    }
    const double e = median(engine);
    const double r = median(raw);
    const double h = median(held);
    std::printf("median over %d connections (OpenVPN over UDP, namespaces):\n", Rounds);
    std::printf("  Connection::connect -> connected        %8.1f ms\n", e);
    std::printf("  raw openvpn -> Initialization Sequence  %8.1f ms (engine adds %.1f ms)\n", r, e - r);
    std::printf("  raw hold release -> CONNECTED           %8.1f ms (engine adds %.1f ms)\n", h, e - h);
    std::printf("%s\n",
                qPrintable(goalLine("connect beyond raw OpenVPN (hold release to CONNECTED)", e - h, "ms", 50)));
    return 0;
}
