// The whole program as a person uses it: the real binary under a private X server and session
// bus, in the client namespace of the helper's end-to-end lab, with the real helper daemon and
// OpenVPN server and the fake service. It signs in from its remembered account, is connected,
// disconnected and quit through its tray menu as a desktop panel would, and must leave nothing
// behind, also when a part of the whole fails under it. The machine's own namespace is never
// changed.
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QMutex>
#include <QNetworkInterface>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSettings>
#include <QTcpSocket>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <sched.h>
#include <thread>
#include <unistd.h>

#include "Constants.h"
#include "E2eLab.h"
#include "FakeService.h"
#include "StatusNotifierWatcherDouble.h"
#include "TestEnvironment.h"

namespace {

const QString Location = QStringLiteral("Lab");
const QString WatcherConnection = QStringLiteral("tavrin-e2e-panel");
const char* const CountTable = "tvn_e2e_count";

enum class Fault {
    OpenVpnKilled,
    DaemonKilled, // and started again
    DaemonStopped,
    ProgramKilled,
    ProgramTerminated,
    LinkDown,
    StunnelKilled,
    ChildSignals, // a burst of SIGCHLD while the program talks to the daemon
};

// Runs the command "$@" with the file "$0" in the place of /etc/resolv.conf (in a private mount namespace).
const char* const ResolverShell = "mount --bind \"$0\" /etc/resolv.conf && exec \"$@\"";

// Runs a program of the lab's tools to its end; its exit code, or -1.
int run(const QString& program, const QStringList& arguments, QByteArray* output = nullptr)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(15000) || process.exitStatus() != QProcess::NormalExit)
        return -1;
    if (output)
        *output = process.readAll();
    return process.exitCode();
}

bool pings(const QString& address)
{
    return run(QStringLiteral("ping"), {"-c", "2", "-i", "0.2", "-W", "1", address}) == 0;
}

bool firewallTable()
{
    return run(QStringLiteral("nft"), {"list", "table", "inet", "tavrin"}) == 0;
}

bool tcpReachable(const char* address, int port)
{
    QTcpSocket socket;
    socket.connectToHost(QLatin1String(address), quint16(port));
    return socket.waitForConnected(1000);
}

// Starts a helper program that reports one line on its standard output (Xvfb its display
// number, dbus-daemon its address) and returns that line.
QString startReporting(QProcess& process, const QString& program, const QStringList& arguments)
{
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    QByteArray line;
    for (int i = 0; i < 100 && !line.contains('\n') && process.state() != QProcess::NotRunning; ++i) {
        process.waitForReadyRead(100);
        line += process.readAllStandardOutput();
    }
    return QString::fromLocal8Bit(line).trimmed();
}

void stopProcess(QProcess& process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished();
    }
}

bool makePrivateDir(const QString& path)
{
    return QDir().mkpath(path)
        && QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

struct MenuItem
{
    int id = 0;
    QString label;
    bool enabled = true;
};

} // namespace

Q_DECLARE_METATYPE(Fault)

class TestWholeProgram : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();
    void survivesAFault_data();
    void survivesAFault();
    void takesTheOfferedUpdate();
    void blockedLetsOnlyTheProgramOut();

private:
    QString home() const { return m_root.path() + QStringLiteral("/home"); }
    QString programTemp() const { return m_root.path() + QStringLiteral("/tmp"); }

    void rememberAccount(const QString& protocol, bool killSwitch);
    void startProgram();
    void disconnectTray();
    void quit();
    void verifyNothingLeft();
    bool awaitLabel(const QString& label, int timeoutMs);
    bool startCounting(const QString& tunnelServer);
    QMap<QString, int> stopCounting();
    QList<MenuItem> trayMenu();
    MenuItem connectItem();
    void clickTray(const MenuItem& item);
    QVariantList
    callProgram(const QString& path, const QString& interface, const QString& method, const QVariantList& args);

    E2eLab m_lab;
    QTemporaryDir m_root;
    QScopedPointer<FakeService> m_service;
    QProcess m_xserver;
    QProcess m_bus;
    QString m_display;
    QString m_busAddress;
    QThread m_watcherThread;
    StatusNotifierWatcherDouble m_watcher;
    QScopedPointer<QDBusConnection> m_panel;
    QProcess m_program;
    std::atomic<pid_t> m_programPid {0}; // for another thread
    QProcess m_traffic;
    QStringList m_seen; // the labels the tray has shown since the count began
    QString m_trayService;
    QString m_menuPath;
    // Set for a run against a service found by name: its URL, and the resolver file the program sees.
    QString m_serviceUrl;
    QString m_resolvConf;
};

void TestWholeProgram::initTestCase()
{
    QString missing = E2eLab::missingPrerequisite();
    for (const char* program : {"Xvfb", "dbus-daemon", "xdotool"}) {
        if (missing.isEmpty() && QStandardPaths::findExecutable(QLatin1String(program)).isEmpty())
            missing = QStringLiteral("%1 is not installed (scripts/install-deps)").arg(QLatin1String(program));
    }
    if (!missing.isEmpty())
        QSKIP(qPrintable(QStringLiteral("whole-program test skipped: ") + missing));
    QVERIFY(m_root.isValid());
    QVERIFY2(m_lab.start(), qPrintable(m_lab.error()));

    // From here on everything runs in the client namespace: the service on its loopback, and the
    // X server and the bus, whose abstract sockets belong to it as well.
    FakeFixture fixture;
    fixture.login = QStringLiteral("e2e");
    fixture.password = QStringLiteral("e2e-pass");
    fixture.config = m_lab.clientTemplate();
    const QString user = QLatin1String(E2eLab::User);
    const qint64 expiry = QDateTime::currentSecsSinceEpoch() + 90 * 86400;
    fixture.logins = {{user, E2eLab::Password, expiry, m_lab.clientCert(), m_lab.clientKey()}};
    const QString ssl = QString::number(E2eLab::StealthPort);
    // Name, address, TCP and UDP ports, SSL port, flag, login, name server, group (standard) and SNI.
    fixture.servers = {
        {Location, E2eLab::ServerAddress, "80", "1194", ssl, "de", user, E2eLab::UdpTunnelServer, "1", "vpn.e2e.test"}};
    fixture.timezone = QStringLiteral("Europe/Berlin");
    // The service offers the version the program already is, so no update is proposed.
    fixture.upgradeVersion = Constants::ClientVersion;
    fixture.upgradeLink = QStringLiteral("/download/update.deb");
    m_service.reset(new FakeService);
    m_service->setFixture(fixture);
    QString error;
    QVERIFY2(m_service->start(0, &error), qPrintable(error));

    m_display = startReporting(
        m_xserver, QStringLiteral("Xvfb"), {"-displayfd", "1", "-nolisten", "tcp", "-screen", "0", "1024x768x24"});
    QVERIFY2(!m_display.isEmpty(), "Xvfb did not start");
    m_busAddress = startReporting(m_bus, QStringLiteral("dbus-daemon"), {"--session", "--nofork", "--print-address=1"});
    QVERIFY2(!m_busAddress.isEmpty(), "dbus-daemon --session did not start");

    m_panel.reset(new QDBusConnection(QDBusConnection::connectToBus(m_busAddress, WatcherConnection)));
    QVERIFY(m_panel->isConnected());
    m_watcherThread.start();
    m_watcher.moveToThread(&m_watcherThread);
    QVERIFY(m_panel->registerObject(QStringLiteral("/StatusNotifierWatcher"),
                                    &m_watcher,
                                    QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties));
    QVERIFY(m_panel->registerService(QStringLiteral("org.kde.StatusNotifierWatcher")));

    // The program runs from a copy of its own, so its connection trace (beside the executable)
    // goes with this test's directory.
    QVERIFY(QDir().mkpath(m_root.path() + QStringLiteral("/bin")));
    QVERIFY(QFile::copy(QStringLiteral(TAVRIN_BINARY), m_root.path() + QStringLiteral("/bin/tavrin")));
    for (const QString& sub : {QStringLiteral("/run"), QStringLiteral("/tmp"), QStringLiteral("/home")})
        QVERIFY(makePrivateDir(m_root.path() + sub));

    // A first run signs in with the remembered account and keeps the service's answers in its
    // offline cache, as an earlier session would have; the later runs start from that cache.
    rememberAccount(QStringLiteral("udp"), false);
    startProgram();
    QTRY_VERIFY_WITH_TIMEOUT(connectItem().enabled, 20000);
    quit();
}

void TestWholeProgram::cleanupTestCase()
{
    stopProcess(m_program);
    if (m_panel) {
        m_panel.reset();
        QDBusConnection::disconnectFromBus(WatcherConnection);
    }
    m_watcherThread.quit();
    m_watcherThread.wait();
    stopProcess(m_bus);
    stopProcess(m_xserver);
    m_service.reset();
    m_lab.stop();
}

void TestWholeProgram::cleanup()
{
    if (QTest::currentTestFailed()) {
        qInfo().noquote() << "program output:\n"
                          << readFile(m_root.path() + QStringLiteral("/program.out")).right(2000);
        qInfo().noquote() << "program log:\n"
                          << readFile(home() + QStringLiteral("/.local/share/QOLV/Tavrin/log.txt")).right(6000);
        qInfo().noquote() << "daemon log:\n" << m_lab.daemonLog().right(3000);
        // What a fault left for the rows that follow: the link, the daemon, the count.
        stopProcess(m_traffic);
        run(QStringLiteral("nft"), {"delete", "table", "inet", CountTable});
        E2eLab::setServerLink(true);
        if (m_lab.daemonPid() == 0)
            m_lab.startDaemon();
    }
    stopProcess(m_program);
    // A program that had to be killed leaves its temporary files; the next run must not see them.
    QDir(programTemp()).removeRecursively();
    makePrivateDir(programTemp());
}

// A remembered sign-in, as the program keeps it after the user has signed in and chosen a
// location and a protocol on an earlier run.
void TestWholeProgram::rememberAccount(const QString& protocol, bool killSwitch)
{
    QSettings settings(home() + QStringLiteral("/.config/QOLV/Tavrin.conf"), QSettings::IniFormat);
    settings.setValue(QStringLiteral("rememberUser"), true);
    settings.setValue(QStringLiteral("login"), m_service->fixture().login);
    settings.setValue(QStringLiteral("password"), m_service->fixture().password);
    settings.setValue(QStringLiteral("vpnLogin"), QLatin1String(E2eLab::User));
    settings.setValue(QStringLiteral("lastLocationId"), QLatin1String(E2eLab::User) + QStringLiteral("::") + Location);
    settings.setValue(QStringLiteral("advProtocol"), protocol);
    settings.setValue(QStringLiteral("killConnect"), killSwitch);
    settings.setValue(QStringLiteral("autoConnectOnStart"), false);
    settings.setValue(QStringLiteral("language"), QStringLiteral("en"));
    settings.sync();
    QCOMPARE(settings.status(), QSettings::NoError);
}

void TestWholeProgram::startProgram()
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment(); // with the lab's TAVRIN_HELPER_PORT
    env.insert(QStringLiteral("HOME"), home());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home() + QStringLiteral("/.config"));
    env.insert(QStringLiteral("XDG_DATA_HOME"), home() + QStringLiteral("/.local/share"));
    env.insert(QStringLiteral("XDG_CACHE_HOME"), home() + QStringLiteral("/.cache"));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_root.path() + QStringLiteral("/run"));
    env.insert(QStringLiteral("TMPDIR"), programTemp());
    env.insert(QStringLiteral("DISPLAY"), QLatin1Char(':') + m_display);
    env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), m_busAddress);
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    env.remove(QStringLiteral("QT_QPA_PLATFORMTHEME"));
    env.remove(QStringLiteral("XDG_CURRENT_DESKTOP"));
    const QString service = m_serviceUrl.isEmpty() ? m_service->baseUrl() : m_serviceUrl;
    env.insert(QStringLiteral("TAVRIN_API_URL"), service);
    env.insert(QStringLiteral("TAVRIN_CA_FILE"), FakeService::caFile());
    env.insert(QStringLiteral("TAVRIN_SITE_URL"), service);
    env.insert(QStringLiteral("TAVRIN_PROBE_URL"), service + QLatin1Char('/'));
    m_program.setProcessEnvironment(env);
    m_program.setStandardOutputFile(m_root.path() + QStringLiteral("/program.out"), QIODevice::Append);
    m_program.setStandardErrorFile(m_root.path() + QStringLiteral("/program.out"), QIODevice::Append);
    m_trayService.clear();
    m_menuPath.clear();
    const QString binary = m_root.path() + QStringLiteral("/bin/tavrin");
    if (m_resolvConf.isEmpty())
        m_program.start(binary, QStringList());
    else // in a mount namespace of its own, where the resolver file is the lab's (same process id)
        m_program.start(QStringLiteral("unshare"), {"--mount", "--", "sh", "-c", ResolverShell, m_resolvConf, binary});
    QVERIFY(m_program.waitForStarted());
    m_programPid = pid_t(m_program.processId());

    // The tray icon registers with the panel under a name that carries the process id.
    const QString tag = QStringLiteral("-%1-").arg(m_program.processId());
    QTRY_VERIFY_WITH_TIMEOUT(!(m_trayService = m_watcher.items().filter(tag).value(0)).isEmpty(), 15000);
}

// Ends the connection through the tray, as the user does before quitting: Quit asks first while
// the connection is up.
void TestWholeProgram::disconnectTray()
{
    const QList<MenuItem> menu = trayMenu();
    QCOMPARE(menu.size(), 5);
    QCOMPARE(menu.at(3).label, QStringLiteral("Disconnect"));
    QVERIFY(menu.at(3).enabled);
    clickTray(menu.at(3));
    QTRY_COMPARE_WITH_TIMEOUT(connectItem().label, QStringLiteral("Connect %1").arg(Location), 20000);
    QTRY_COMPARE_WITH_TIMEOUT(m_lab.processesInClient("openvpn"), 0, 10000);
}

void TestWholeProgram::quit()
{
    const QList<MenuItem> menu = trayMenu();
    QCOMPARE(menu.size(), 5);
    QCOMPARE(menu.at(4).label, QStringLiteral("Quit"));
    clickTray(menu.at(4));
    QVERIFY(m_program.waitForFinished(20000));
    QCOMPARE(m_program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program.exitCode(), 0);
}

QVariantList TestWholeProgram::callProgram(const QString& path,
                                           const QString& interface,
                                           const QString& method,
                                           const QVariantList& args)
{
    QDBusMessage message = QDBusMessage::createMethodCall(m_trayService, path, interface, method);
    message.setArguments(args);
    QDBusPendingCall pending = m_panel->asyncCall(message, 10000);
    if (!QTest::qWaitFor([&] { return pending.isFinished(); }, 11000) || pending.isError())
        return {};
    return pending.reply().arguments();
}

// The tray menu as the panel shows it: every entry but the separators.
QList<MenuItem> TestWholeProgram::trayMenu()
{
    if (m_menuPath.isEmpty()) {
        m_menuPath = qvariant_cast<QDBusObjectPath>(
                         callProgram(QStringLiteral("/StatusNotifierItem"),
                                     QStringLiteral("org.freedesktop.DBus.Properties"),
                                     QStringLiteral("Get"),
                                     {QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("Menu")})
                             .value(0)
                             .value<QDBusVariant>()
                             .variant())
                         .path();
        if (m_menuPath.isEmpty())
            return {};
    }
    const QVariantList layout = callProgram(
        m_menuPath, QStringLiteral("com.canonical.dbusmenu"), QStringLiteral("GetLayout"), {0, -1, QStringList()});
    if (layout.size() != 2)
        return {};

    // (id, properties, children) with each child a variant of the same structure.
    QList<MenuItem> items;
    const QDBusArgument root = qvariant_cast<QDBusArgument>(layout.at(1));
    int rootId = 0;
    QVariantMap rootProperties;
    root.beginStructure();
    root >> rootId >> rootProperties;
    root.beginArray();
    while (!root.atEnd()) {
        QDBusVariant child;
        root >> child;
        const QDBusArgument entry = qvariant_cast<QDBusArgument>(child.variant());
        MenuItem item;
        QVariantMap properties;
        entry.beginStructure();
        entry >> item.id >> properties;
        entry.endStructure();
        if (properties.value(QStringLiteral("type")).toString() == QLatin1String("separator"))
            continue;
        item.label = properties.value(QStringLiteral("label")).toString();
        item.enabled = properties.value(QStringLiteral("enabled"), true).toBool();
        items << item;
    }
    root.endArray();
    root.endStructure();
    return items;
}

// The entry under the program's name that carries the connection state and the location.
MenuItem TestWholeProgram::connectItem()
{
    const QList<MenuItem> items = trayMenu();
    return items.size() == 5 ? items.at(1) : MenuItem();
}

void TestWholeProgram::clickTray(const MenuItem& item)
{
    // The program may be gone before it answers a click on "Quit".
    callProgram(m_menuPath,
                QStringLiteral("com.canonical.dbusmenu"),
                QStringLiteral("Event"),
                {item.id,
                 QStringLiteral("clicked"),
                 QVariant::fromValue(QDBusVariant(QVariant(QString()))),
                 uint(QDateTime::currentSecsSinceEpoch())});
}

// Nothing is left: no process, tunnel device, firewall table or temporary file; and the daemon
// runs for what comes next.
void TestWholeProgram::verifyNothingLeft()
{
    for (const char* name : {"tavrin", "openvpn", "stunnel4", "stunnel"})
        QTRY_COMPARE_WITH_TIMEOUT(m_lab.processesInClient(name), 0, 5000);
    for (const QNetworkInterface& device : QNetworkInterface::allInterfaces())
        QVERIFY2(!device.name().startsWith(QLatin1String("tun")), qPrintable(device.name()));
    // The daemon tidies up after its OpenVPN has ended, which may be just now.
    QByteArray tables;
    QTRY_VERIFY2_WITH_TIMEOUT(run(QStringLiteral("nft"), {"list", "tables"}, &tables) == 0
                                  && !tables.contains("tavrin"),
                              tables.constData(),
                              5000);
    QTRY_COMPARE_WITH_TIMEOUT(readFile(m_lab.resolvConf()), m_lab.originalResolvConf(), 5000);
    QCOMPARE(QDir(programTemp()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden).join(", "),
             QString());
    QVERIFY(!QFile::exists(QStringLiteral("/tmp/tavrin-stunnel.pid")));
    QVERIFY(m_lab.daemonPid() > 0);
}

// Watches the tray's connection entry until it reads label; false when it has not within
// timeoutMs. Every label it shows meanwhile is kept in m_seen.
bool TestWholeProgram::awaitLabel(const QString& label, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    for (;;) {
        const QString shown = connectItem().label;
        if (!shown.isEmpty() && (m_seen.isEmpty() || m_seen.last() != shown))
            m_seen << shown;
        if (shown == label)
            return true;
        if (deadline.hasExpired())
            return false;
        QTest::qWait(50);
    }
}

// Counts from now on what leaves the client's end of the link outside the tunnel (all but the
// tunnel's own transport to the server, the ICMP errors on it and neighbour discovery), the name
// lookups among it and those addressed to the tunnels' name servers; while a loop looks up a name
// at the resolver in force and pings the tunnel's server, every 150 ms.
bool TestWholeProgram::startCounting(const QString& tunnelServer)
{
    m_seen = QStringList(connectItem().label);
    const QString server = QLatin1String(E2eLab::ServerAddress);
    const QString rules
        = QStringLiteral(
              "table inet %1\ndelete table inet %1\ntable inet %1 {\n"
              "counter outside { }\ncounter dns { }\ncounter tunneldns { }\n"
              "chain postrouting {\ntype filter hook postrouting priority 100; policy accept;\n"
              "oifname != \"%2\" return\n"
              "ip daddr %3 udp dport 1194 return\nip daddr %3 tcp dport { 80, %4 } return\n"
              "ip daddr %3 icmp type destination-unreachable return\n"
              // The latency measurement's echo to the location's own address, allowed like its tunnel.
              "ip daddr %3 icmp type echo-request return\n"
              "icmpv6 type { nd-router-solicit, nd-neighbor-solicit, nd-neighbor-advert, mld2-listener-report } "
              "return\n"
              "counter name \"outside\"\nmeta l4proto { tcp, udp } th dport { 53, 853 } counter name \"dns\"\n"
              "ip daddr { 10.232.0.0/24, 10.233.0.0/24 } meta l4proto { tcp, udp } th dport { 53, 853 } "
              "counter name \"tunneldns\"\n}\n}\n")
              .arg(QLatin1String(CountTable), QLatin1String(E2eLab::ClientLink), server)
              .arg(E2eLab::StealthPort);
    if (run(QStringLiteral("nft"), {rules}) != 0)
        return false;
    const QString loop = QStringLiteral(
        "while :; do ns=; while read -r key value _; do [ \"$key\" = nameserver ] && ns=$value && break; done <\"$1\"\n"
        "{ printf '\\x12\\x34\\x01\\0\\0\\x01\\0\\0\\0\\0\\0\\0\\x04leak\\x04test\\0\\0\\x01\\0\\x01' "
        ">/dev/udp/$ns/53; } 2>/dev/null\n"
        "ping -c 1 -W 1 \"$2\" >/dev/null 2>&1 & sleep 0.15; done");
    m_traffic.start(QStringLiteral("bash"), {"-c", loop, "traffic", m_lab.resolvConf(), tunnelServer});
    return m_traffic.waitForStarted();
}

// Ends the traffic and the count: the packets counted, by counter.
QMap<QString, int> TestWholeProgram::stopCounting()
{
    stopProcess(m_traffic);
    QByteArray listing;
    run(QStringLiteral("nft"), {"list", "counters", "table", "inet", CountTable}, &listing);
    run(QStringLiteral("nft"), {"delete", "table", "inet", CountTable});
    QMap<QString, int> counts;
    QRegularExpressionMatchIterator it = QRegularExpression(QStringLiteral("counter (\\w+) \\{\\s*packets (\\d+)"))
                                             .globalMatch(QString::fromLatin1(listing));
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        counts.insert(match.captured(1), match.captured(2).toInt());
    }
    return counts;
}

void TestWholeProgram::survivesAFault_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<bool>("killSwitch");

    const QPair<const char*, Fault> faults[] = {
        {"OpenVPN killed", Fault::OpenVpnKilled},
        {"daemon killed and restarted", Fault::DaemonKilled},
        {"daemon stopped", Fault::DaemonStopped},
        {"program killed", Fault::ProgramKilled},
        {"program sent SIGTERM", Fault::ProgramTerminated},
        {"link down for 20 s", Fault::LinkDown},
        {"stunnel killed", Fault::StunnelKilled}, // the only one over the imitation of HTTPS
        {"SIGCHLD burst while connecting", Fault::ChildSignals},
    };
    for (const auto& fault : faults) {
        for (bool killSwitch : {false, true})
            QTest::addRow("%s, kill switch %s", fault.first, killSwitch ? "on" : "off") << fault.second << killSwitch;
    }
}

// Connected, the program meets a fault. Through it nothing may leave outside the tunnel behind the
// kill switch, and no name lookup may go to the tunnel's name server over the bare link; the page
// ends as the fault calls for, and the program leaves nothing behind when it quits.
void TestWholeProgram::survivesAFault()
{
    QFETCH(Fault, fault);
    QFETCH(bool, killSwitch);
    const bool stealth = fault == Fault::StunnelKilled;
    const QString tunnelServer = QLatin1String(stealth ? E2eLab::TcpTunnelServer : E2eLab::UdpTunnelServer);
    const QString idle = QStringLiteral("Connect %1").arg(Location);
    const QString connected = QStringLiteral("Connected to %1").arg(Location);
    const QString again = QStringLiteral("Re-establishing the connection to %1").arg(Location);
    const auto killInClient = [this](const QByteArray& name) {
        const QStringList pids = m_lab.processIdsInClient(name);
        return pids.size() == 1 && ::kill(pid_t(pids.first().toInt()), SIGKILL) == 0;
    };

    rememberAccount(stealth ? QStringLiteral("stealth") : QStringLiteral("udp"), killSwitch);
    // SIGCHLD as finished children send it, through the daemon exchanges of the start (the kill
    // switch) and of the connection.
    std::atomic<bool> bursting {fault == Fault::ChildSignals};
    m_programPid = 0;
    std::thread burst([this, &bursting] {
        while (bursting) {
            if (const pid_t pid = m_programPid)
                ::kill(pid, SIGCHLD);
            ::usleep(200);
        }
    });
    const auto endBurst = qScopeGuard([&] {
        bursting = false;
        burst.join();
    });
    startProgram();
    const pid_t pid = m_programPid;
    QVERIFY(awaitLabel(idle, 20000));
    QTRY_VERIFY(connectItem().enabled);
    QTRY_COMPARE_WITH_TIMEOUT(firewallTable(), killSwitch, 10000); // the kill switch holds before any connection
    if (fault == Fault::ChildSignals)
        QVERIFY(startCounting(tunnelServer));
    clickTray(connectItem());
    QVERIFY(awaitLabel(connected, 45000));
    bursting = false;
    QVERIFY2(pings(tunnelServer), "no answer through the tunnel");
    // Connected with the kill switch really in force: the stray address is out of reach.
    QCOMPARE(tcpReachable(E2eLab::StrayAddress, E2eLab::StealthPort), !killSwitch);
    if (fault != Fault::ChildSignals)
        QVERIFY(startCounting(tunnelServer));

    QMap<QString, int> leaks;
    switch (fault) {
    case Fault::OpenVpnKilled:
        QVERIFY(killInClient("openvpn"));
        QVERIFY(awaitLabel(idle, 20000));
        break;
    case Fault::DaemonKilled:
        QVERIFY(m_lab.stopDaemon(SIGKILL));
        // Its OpenVPN outlives it and the tunnel stays up, until the daemon's next start ends it.
        QVERIFY(!awaitLabel(idle, 2000));
        QVERIFY(pings(tunnelServer));
        QVERIFY2(m_lab.startDaemon(), qPrintable(m_lab.error()));
        QVERIFY(awaitLabel(idle, 20000));
        break;
    case Fault::DaemonStopped:
        QVERIFY(m_lab.stopDaemon(SIGTERM));
        QVERIFY(awaitLabel(idle, 20000));
        break;
    case Fault::ProgramKilled: {
        QVERIFY(::kill(pid, SIGKILL) == 0 && m_program.waitForFinished(5000));
        // The daemon's OpenVPN, the kill switch and the configuration with the key stay, until the
        // next start.
        QCOMPARE(m_lab.processesInClient("openvpn"), 1);
        QCOMPARE(firewallTable(), killSwitch);
        const QStringList configs {QStringLiteral("Tavrin.*")};
        QCOMPARE(QDir(programTemp()).entryList(configs, QDir::Files).size(), 1);
        startProgram();
        QVERIFY(awaitLabel(idle, 20000));
        QCOMPARE(QDir(programTemp()).entryList(configs, QDir::Files), QStringList());
        QTRY_VERIFY(connectItem().enabled);
        clickTray(connectItem());
        QVERIFY(awaitLabel(connected, 45000));
        // The daemon has put the new OpenVPN in the place of the one left behind.
        QCOMPARE(m_lab.processesInClient("openvpn"), 1);
        QVERIFY(pings(tunnelServer));
        break;
    }
    case Fault::ProgramTerminated:
        QVERIFY(::kill(pid, SIGTERM) == 0);
        // Quitting lifts the kill switch on the way out: what leaves after that is no longer the program's to stop.
        QTRY_VERIFY_WITH_TIMEOUT(!killSwitch || !firewallTable() || m_program.state() == QProcess::NotRunning, 15000);
        leaks = stopCounting();
        QVERIFY(m_program.waitForFinished(15000));
        QCOMPARE(m_program.exitStatus(), QProcess::NormalExit);
        break;
    case Fault::LinkDown: {
        QVERIFY(E2eLab::setServerLink(false));
        // OpenVPN misses the server's pings and starts over, again and again, never giving up.
        const bool gaveUp = awaitLabel(idle, 20000);
        QVERIFY(E2eLab::setServerLink(true));
        QVERIFY(!gaveUp);
        QVERIFY2(m_seen.contains(again), qPrintable(m_seen.join(QStringLiteral(", "))));
        QVERIFY(awaitLabel(connected, 60000));
        QVERIFY(pings(tunnelServer));
        break;
    }
    case Fault::StunnelKilled: {
        const QStringList before = m_lab.processIdsInClient("stunnel4");
        QVERIFY(killInClient("stunnel4"));
        QVERIFY(awaitLabel(again, 15000));
        QVERIFY(awaitLabel(connected, 45000));
        const QStringList after = m_lab.processIdsInClient("stunnel4");
        QVERIFY(after.size() == 1 && after != before);
        QVERIFY(pings(tunnelServer));
        break;
    }
    case Fault::ChildSignals: // the kill switch's state was checked on the stray address once connected
        break;
    }

    // The count goes on a little in the state the fault has left, unless the program has ended.
    if (m_program.state() != QProcess::NotRunning)
        QTest::qWait(2000);
    if (fault != Fault::ProgramTerminated)
        leaks = stopCounting();
    // Only an OpenVPN killed outright takes its device away before anyone can put the resolver back.
    if (killSwitch || fault != Fault::OpenVpnKilled)
        QCOMPARE(leaks.value(QStringLiteral("tunneldns"), -1), 0);
    if (killSwitch) {
        QCOMPARE(leaks.value(QStringLiteral("outside"), -1), 0);
        QCOMPARE(leaks.value(QStringLiteral("dns"), -1), 0);
    }

    if (fault == Fault::OpenVpnKilled || fault == Fault::DaemonKilled || fault == Fault::DaemonStopped) {
        // The tunnel has ended by itself: the resolver is back, and the kill switch holds if it was on.
        QTRY_COMPARE_WITH_TIMEOUT(readFile(m_lab.resolvConf()), m_lab.originalResolvConf(), 5000);
        QCOMPARE(m_lab.processesInClient("openvpn"), 0);
        QCOMPARE(firewallTable(), killSwitch);
    }
    if (fault == Fault::DaemonStopped)
        QVERIFY2(m_lab.startDaemon(), qPrintable(m_lab.error()));
    if (m_program.state() != QProcess::NotRunning) {
        if (connectItem().label == connected)
            disconnectTray();
        quit();
    }
    if (!QTest::currentTestFailed())
        verifyNothingLeft();
}

// Offered a newer version by the service, the user takes it: the program downloads it, the daemon
// verifies and installs it (into a dpkg root of the lab's own) and restarts as the daemon that
// the update installed, and the program ends as after any update.
void TestWholeProgram::takesTheOfferedUpdate()
{
    const QString dir = m_lab.dir();
    QCOMPARE(run(QStringLiteral(TAVRIN_MAKE_UPDATE), {dir, QStringLiteral(TAVRIN_BUILD_DIR), "3.7.0"}), 0);
    m_service->fixture().upgradeVersion = QStringLiteral("3.7.0");
    m_service->fixture().packageFile = dir + QStringLiteral("/update.deb");
    rememberAccount(QStringLiteral("udp"), false);
    startProgram();

    // The offer is put to the user a few seconds after the sign-in; Return takes it, as Yes is
    // the default answer.
    QProcess xdotool;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DISPLAY"), QLatin1Char(':') + m_display);
    xdotool.setProcessEnvironment(env);
    const auto runXdotool = [&xdotool](const QStringList& arguments) {
        xdotool.start(QStringLiteral("xdotool"), arguments);
        return xdotool.waitForFinished(10000) && xdotool.exitCode() == 0;
    };
    QTRY_VERIFY_WITH_TIMEOUT(runXdotool({"search", "--name", "^Tavrin Update$"}), 30000);
    const QString window = QString::fromLatin1(xdotool.readAllStandardOutput()).split(QLatin1Char('\n')).first();
    QVERIFY(runXdotool({"windowfocus", "--sync", window, "key", "Return"}));

    // The service answers from this process: its event loop must run while the program downloads.
    QTRY_COMPARE_WITH_TIMEOUT(m_program.state(), QProcess::NotRunning, 60000);
    QCOMPARE(m_program.exitStatus(), QProcess::NormalExit);
    const auto installed = [&dir] {
        QByteArray version;
        run(QStringLiteral("dpkg-query"), {"--root=" + dir + "/dpkg-root", "-W", "-f=${Version}", "tavrin"}, &version);
        return version;
    };
    QTRY_COMPARE_WITH_TIMEOUT(installed(), QByteArray("3.7.0"), 30000);
    const QString exe = dir + QStringLiteral("/dpkg-root/usr/sbin/tavrin-helperd");
    QTRY_COMPARE_WITH_TIMEOUT(
        QFileInfo(QStringLiteral("/proc/%1/exe").arg(m_lab.daemonPid())).symLinkTarget(), exe, 20000);
    QTRY_VERIFY_WITH_TIMEOUT(
        m_lab.daemonLog().indexOf("listening on 127.0.0.1 port", m_lab.daemonLog().indexOf("restarting as")) > 0,
        10000);
}

// With the kill switch on and no tunnel, the rules let only the program's own requests out, and the tray says so.
// They stay when the program crashes: the next start still signs in, by the address its last lookup found, while
// a lookup of any other name and another program's connection fail.
void TestWholeProgram::blockedLetsOnlyTheProgramOut()
{
    // The service and a name server behind the link, as on the Internet.
    const QString serviceAddress = QStringLiteral("10.231.0.5");
    const auto serverAddress = [&](const char* change) {
        return run(QStringLiteral("ip"),
                   QStringLiteral("-n tvn-e2e-srv addr %1 %2/24 dev tvn-e2e-s").arg(change, serviceAddress).split(' '));
    };
    QCOMPARE(serverAddress("add"), 0);
    QProcess dns;
    dns.setProcessChannelMode(QProcess::ForwardedChannels);
    dns.start(QStringLiteral("ip"),
              QStringLiteral("netns exec tvn-e2e-srv dnsmasq -k --no-resolv --no-hosts --bind-interfaces --user=root "
                             "--pid-file= --listen-address=%1 --address=/e2e.test/%2")
                  .arg(QLatin1String(E2eLab::StrayAddress), serviceAddress)
                  .split(' '));
    m_resolvConf = m_root.path() + QStringLiteral("/resolv.conf");
    QVERIFY(writeFile(m_resolvConf, QByteArrayLiteral("nameserver 10.231.0.3\noptions timeout:1 attempts:1\n")));
    FakeService service;
    service.setFixture(m_service->fixture());
    service.setHostName(QStringLiteral("api.e2e.test"));
    {
        // A listening socket stays in the namespace it was made in.
        const int client = ::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
        const int server = ::open("/run/netns/tvn-e2e-srv", O_RDONLY | O_CLOEXEC);
        QVERIFY(client >= 0 && server >= 0 && ::setns(server, CLONE_NEWNET) == 0);
        QString error;
        const bool listening = service.start(0, &error, QHostAddress(serviceAddress));
        QVERIFY(::setns(client, CLONE_NEWNET) == 0);
        ::close(client);
        ::close(server);
        QVERIFY2(listening, qPrintable(error));
    }
    m_serviceUrl = service.baseUrl();
    const auto tidy = qScopeGuard([&] {
        m_serviceUrl.clear();
        m_resolvConf.clear();
        stopProcess(m_program);
        stopProcess(dns);
        serverAddress("del");
    });
    const auto resolves = [this](const QString& name) {
        return run(QStringLiteral("unshare"),
                   {"--mount", "--", "sh", "-c", ResolverShell, m_resolvConf, "getent", "hosts", name})
            == 0;
    };
    const auto blockedShown = [this] {
        const QDBusArgument tip = callProgram(QStringLiteral("/StatusNotifierItem"),
                                              QStringLiteral("org.freedesktop.DBus.Properties"),
                                              QStringLiteral("Get"),
                                              {QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("ToolTip")})
                                      .value(0)
                                      .value<QDBusVariant>()
                                      .variant()
                                      .value<QDBusArgument>();
        QString icon, title, text;
        tip.beginStructure();
        tip >> icon;
        tip.beginArray();
        while (!tip.atEnd()) {
            int width = 0, height = 0;
            QByteArray pixels;
            tip.beginStructure();
            tip >> width >> height >> pixels;
            tip.endStructure();
        }
        tip.endArray();
        tip >> title >> text;
        tip.endStructure();
        return title == QLatin1String("Tavrin: Internet blocked by the kill switch");
    };
    QTRY_VERIFY_WITH_TIMEOUT(resolves(QStringLiteral("other.e2e.test")), 10000); // before any rules

    rememberAccount(QStringLiteral("udp"), true);
    startProgram();
    QTRY_VERIFY_WITH_TIMEOUT(blockedShown(), 20000);
    QVERIFY(::kill(m_program.processId(), SIGKILL) == 0 && m_program.waitForFinished(5000));
    QVERIFY(firewallTable());
    QVERIFY(!resolves(QStringLiteral("other.e2e.test")));
    QVERIFY(!tcpReachable(E2eLab::StrayAddress, E2eLab::StealthPort));

    const QString log = home() + QStringLiteral("/.local/share/QOLV/Tavrin/log.txt");
    QFile::remove(log);
    service.reset();
    startProgram();
    QTRY_VERIFY_WITH_TIMEOUT(readFile(log).contains("Auth Request finished [code: NetworkManager::Success"), 20000);
    QVERIFY(service.requests().value(0).query().contains(QLatin1String("act=wizardsetup")));
    QTRY_VERIFY_WITH_TIMEOUT(blockedShown(), 10000);
    QVERIFY(!resolves(QStringLiteral("other.e2e.test")));
    QVERIFY(!tcpReachable(E2eLab::StrayAddress, E2eLab::StealthPort));
    quit();
    verifyNothingLeft();
}

QTEST_GUILESS_MAIN(TestWholeProgram)
#include "tst_WholeProgram.moc"
