// The daemon as a process: the wire protocol, the refusals, and what the accepted requests do.
// OpenVPN and nft are stand-ins first on PATH here; the real ones run in the e2e test. The update
// command has tests of its own (tst_UpdateInstall).

#include "WireClient.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

namespace {

bool writeFile(const QString& path, const QByteArray& data, QFileDevice::Permissions mode)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(data) == data.size() && f.setPermissions(mode);
}

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

const QFileDevice::Permissions privateFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
const QFileDevice::Permissions program
    = privateFile | QFileDevice::ExeOwner | QFileDevice::ReadOther | QFileDevice::ExeOther;

} // namespace

class tst_HelperDaemon : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void refusesAttacks_data();
    void refusesAttacks();
    void answersQuestions();
    void timezoneChangeAndRestore();
    void startsOpenVpnWithTheCheckedConfiguration();
    void firewallTouchesOnlyItsOwnTable();
    void silentClientDoesNotStallOthers();
    void firewallComesBackAfterARestart();

private:
    void startDaemon();
    void restartDaemon();
    QString path(const QString& name) const { return m_dir.path() + QLatin1Char('/') + name; }
    QString stateDir() const { return path(QStringLiteral("root/var/lib/tavrin-helperd")); }

    QTemporaryDir m_dir;
    QProcess m_daemon;
    QByteArray m_log;
    quint16 m_port = 0;
    int m_attacks = 0;
    int m_refused = 0;
};

void tst_HelperDaemon::initTestCase()
{
    QVERIFY(m_dir.isValid());
    connect(&m_daemon, &QProcess::readyRead, this, [this] { m_log += m_daemon.readAll(); });
    QVERIFY(QDir().mkpath(path(QStringLiteral("bin"))));
    QVERIFY(QDir().mkpath(path(QStringLiteral("root/etc"))));
    QVERIFY(QFile::link(QStringLiteral("/usr/share/zoneinfo/UTC"), path(QStringLiteral("root/etc/localtime"))));

    // Stand-ins record how they were called.
    QVERIFY(writeFile(path(QStringLiteral("bin/openvpn")),
                      QStringLiteral("#!/bin/sh\necho \"$$ $*\" >> %1\nexec sleep 60\n")
                          .arg(path(QStringLiteral("openvpn.calls")))
                          .toUtf8(),
                      program));
    QVERIFY(writeFile(
        path(QStringLiteral("bin/nft")),
        QStringLiteral("#!/bin/sh\necho \"$*\" >> %1\ncat >> %1\n").arg(path(QStringLiteral("nft.calls"))).toUtf8(),
        program));

    const QByteArray goodConfig
        = "client\ndev tun\nproto udp\nremote 10.0.0.1 1194\n<ca>\n-----BEGIN CERTIFICATE-----\n"
          "MIIB\n-----END CERTIFICATE-----\n</ca>\n";
    QVERIFY(writeFile(path(QStringLiteral("good.ovpn")), goodConfig, privateFile));
    QVERIFY(writeFile(path(QStringLiteral("shell.ovpn")), goodConfig + "up /bin/sh\n", privateFile));
    QVERIFY(writeFile(path(QStringLiteral("open.ovpn")), goodConfig, privateFile | QFileDevice::WriteOther));
    QVERIFY(writeFile(path(QStringLiteral("foreign.ovpn")), goodConfig, privateFile));
    QVERIFY(::chown(QFile::encodeName(path(QStringLiteral("foreign.ovpn"))).constData(), 65534, 65534) == 0
            || getuid() != 0);
    QVERIFY(QFile::link(path(QStringLiteral("good.ovpn")), path(QStringLiteral("link.ovpn"))));

    m_port = WireClient::freePort();
    startDaemon();
}

void tst_HelperDaemon::startDaemon()
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("PATH"),
               path(QStringLiteral("bin")) + QLatin1Char(':') + env.value(QStringLiteral("PATH")));
    env.insert(QStringLiteral("TAVRIN_HELPERD_ROOT"), path(QStringLiteral("root")));
    env.insert(QStringLiteral("TAVRIN_HELPERD_SCRIPT"), QStringLiteral(TAVRIN_RESOLVER_SCRIPT));
    m_log.clear();
    m_daemon.setProcessEnvironment(env);
    m_daemon.setProcessChannelMode(QProcess::MergedChannels);
    m_daemon.start(QStringLiteral(TAVRIN_HELPERD_PATH),
                   {QStringLiteral("--port"),
                    QString::number(m_port),
                    QStringLiteral("--request-timeout"),
                    QStringLiteral("2000")});
    QVERIFY(m_daemon.waitForStarted());
    QTRY_VERIFY(m_log.contains("listening on 127.0.0.1"));
}

void tst_HelperDaemon::restartDaemon()
{
    m_daemon.terminate();
    QVERIFY(m_daemon.waitForFinished(10000));
    startDaemon();
}

void tst_HelperDaemon::cleanupTestCase()
{
    m_daemon.terminate();
    QVERIFY(m_daemon.waitForFinished(10000));
    m_log += m_daemon.readAll();
    qInfo("the daemon refused %d of %d attacks", m_refused, m_attacks);
    // Every OpenVPN stand-in it started went with it.
    const QList<QByteArray> calls = readAll(path(QStringLiteral("openvpn.calls"))).trimmed().split('\n');
    for (const QByteArray& call : calls) {
        const QString pid = QString::fromLatin1(call.split(' ').first());
        QVERIFY2(pid.isEmpty() || !QFileInfo::exists(QStringLiteral("/proc/") + pid), qPrintable(pid));
    }
}

void tst_HelperDaemon::refusesAttacks_data()
{
    QTest::addColumn<QByteArray>("request");

    const QString good = path(QStringLiteral("good.ovpn"));
    QTest::newRow("command 4 is kept free") << WireClient::packet(4);
    QTest::newRow("unknown command") << WireClient::packet(99);
    QTest::newRow("command 0") << WireClient::packet(0);
    QTest::newRow("HTTP GET from a web page") << QByteArray("GET / HTTP/1.1\r\nHost: 127.0.0.1:23589\r\n\r\n");
    QTest::newRow("HTTP POST padded to a full request")
        << QByteArray("POST / HTTP/1.1\r\nContent-Length: 64000\r\n\r\n").leftJustified(64005, 'A');
    QTest::newRow("request one byte too long") << WireClient::packet(7) + QByteArray(1, '\0');
    QTest::newRow("request cut short") << WireClient::packet(7).left(100);
    QTest::newRow("zone leaving the database") << WireClient::timezone(false, "../../etc/passwd");
    QTest::newRow("zone as an absolute path") << WireClient::timezone(false, "/etc/passwd");
    QTest::newRow("zone directory part") << WireClient::timezone(false, "Europe/../../../etc/shadow");
    QTest::newRow("zone not in the database") << WireClient::timezone(false, "Mars/Olympus_Mons");
    QTest::newRow("zone directory instead of a zone") << WireClient::timezone(false, "Europe");
    QTest::newRow("zone without a terminating zero") << WireClient::timezone(false, QByteArray(512, 'A'));
    QTest::newRow("openvpn --up of another script")
        << WireClient::openVpn(WireClient::openVpnArguments(good, 40000)
                                   .replace(QStringLiteral("--up /usr/share/tavrin/script/update-resolv-conf.sh"),
                                            QStringLiteral("--up /tmp/evil.sh")));
    QTest::newRow("openvpn extra option")
        << WireClient::openVpn(WireClient::openVpnArguments(good, 40000) + QStringLiteral("--plugin /tmp/evil.so"));
    QTest::newRow("openvpn management on another address") << WireClient::openVpn(
        WireClient::openVpnArguments(good, 40000).replace(QStringLiteral("127.0.0.1"), QStringLiteral("0.0.0.0")));
    QTest::newRow("openvpn path with a quote")
        << WireClient::openVpn(WireClient::openVpnArguments(path(QStringLiteral("a\" --up \"/bin/sh")), 40000));
    QTest::newRow("openvpn path with ..")
        << WireClient::openVpn(WireClient::openVpnArguments(path(QStringLiteral("../x/good.ovpn")), 40000));
    QTest::newRow("openvpn config running up /bin/sh")
        << WireClient::openVpn(WireClient::openVpnArguments(path(QStringLiteral("shell.ovpn")), 40000));
    QTest::newRow("openvpn config that is a link")
        << WireClient::openVpn(WireClient::openVpnArguments(path(QStringLiteral("link.ovpn")), 40000));
    QTest::newRow("openvpn config writable by others")
        << WireClient::openVpn(WireClient::openVpnArguments(path(QStringLiteral("open.ovpn")), 40000));
    QTest::newRow("openvpn config is a directory")
        << WireClient::openVpn(WireClient::openVpnArguments(m_dir.path(), 40000));
    QTest::newRow("openvpn config is a device")
        << WireClient::openVpn(WireClient::openVpnArguments(QStringLiteral("/dev/zero"), 40000));
    QTest::newRow("firewall address that is no address")
        << WireClient::firewall(1,
                                QStringLiteral("127.0.0.1;1.2.3.4 } ; flush ruleset"),
                                QStringLiteral("tun0"),
                                FIREWALL_PARAMETERS {true, false, false, false, false});
    QTest::newRow("firewall interface with a quote")
        << WireClient::firewall(3,
                                QStringLiteral("127.0.0.1"),
                                QStringLiteral("tun0\" accept"),
                                FIREWALL_PARAMETERS {true, false, false, false, false});
    if (getuid() == 0) {
        QTest::newRow("openvpn config of another user")
            << WireClient::openVpn(WireClient::openVpnArguments(path(QStringLiteral("foreign.ovpn")), 40000));
    }
}

void tst_HelperDaemon::refusesAttacks()
{
    QFETCH(QByteArray, request);
    QFile::remove(path(QStringLiteral("openvpn.calls")));
    QFile::remove(path(QStringLiteral("nft.calls")));
    ++m_attacks;
    const int result = WireClient::result(m_port, request);
    QVERIFY2(result <= 0, "the daemon said yes");
    ++m_refused;
    QVERIFY(!QFile::exists(path(QStringLiteral("openvpn.calls"))));
    QVERIFY(!QFile::exists(path(QStringLiteral("nft.calls"))));
}

void tst_HelperDaemon::answersQuestions()
{
    QCOMPARE(WireClient::result(m_port, WireClient::packet(HelperWire::TimezoneChangeSupported)), 1);
    QCOMPARE(WireClient::result(m_port, WireClient::packet(HelperWire::FirewallSupported)), 1);
    QCOMPARE(WireClient::result(m_port, WireClient::packet(HelperWire::FirewallEnableOnStart)), 1);
    QTRY_VERIFY(m_log.contains("request from uid " + QByteArray::number(getuid()) + ": timezonechangeSupported"));
}

void tst_HelperDaemon::timezoneChangeAndRestore()
{
    const QString localtime = path(QStringLiteral("root/etc/localtime"));
    QCOMPARE(WireClient::result(m_port, WireClient::timezone(false, "Europe/Berlin")), 1);
    QCOMPARE(QFileInfo(localtime).symLinkTarget(), QStringLiteral("/usr/share/zoneinfo/Europe/Berlin"));
    QCOMPARE(WireClient::result(m_port, WireClient::timezone(false, "Asia/Tokyo")), 1);
    QCOMPARE(QFileInfo(localtime).symLinkTarget(), QStringLiteral("/usr/share/zoneinfo/Asia/Tokyo"));
    // The machine's own zone comes back, not the one set in between.
    QCOMPARE(WireClient::result(m_port, WireClient::timezone(true, "")), 1);
    QCOMPARE(QFileInfo(localtime).symLinkTarget(), QStringLiteral("/usr/share/zoneinfo/UTC"));
    QCOMPARE(WireClient::result(m_port, WireClient::timezone(true, "")), 1);
}

void tst_HelperDaemon::startsOpenVpnWithTheCheckedConfiguration()
{
    const QString calls = path(QStringLiteral("openvpn.calls"));
    QFile::remove(calls);
    const QString arguments = WireClient::openVpnArguments(path(QStringLiteral("good.ovpn")), 41234);
    QCOMPARE(WireClient::result(m_port, WireClient::openVpn(arguments)), 1);
    QTRY_VERIFY(QFileInfo(calls).size() > 0);
    QCOMPARE(WireClient::result(m_port, WireClient::openVpn(arguments)), 1);

    QTRY_COMPARE(readAll(calls).count('\n'), 2);
    QFile file(calls);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().trimmed().split('\n');
    const QByteArray copy = QFile::encodeName(stateDir() + QStringLiteral("/openvpn.conf"));
    const QByteArray expected = "--config " + copy
        + " --management 127.0.0.1 41234 --management-query-passwords --script-security 2 --up "
        + TAVRIN_RESOLVER_SCRIPT + " --down " + TAVRIN_RESOLVER_SCRIPT;
    for (const QByteArray& line : lines)
        QVERIFY2(line.contains(expected), line.constData());
    // One OpenVPN at a time: the first was stopped by the second start.
    const QByteArray firstPid = lines.first().split(' ').first();
    QTRY_VERIFY(!QFileInfo::exists(QStringLiteral("/proc/") + QString::fromLatin1(firstPid)));
    QTRY_VERIFY(m_log.contains("openvpn: stopping pid"));
    QFile conf(QFile::decodeName(copy));
    QVERIFY(conf.open(QIODevice::ReadOnly));
    QCOMPARE(conf.permissions() & (QFileDevice::ReadOther | QFileDevice::ReadGroup), QFileDevice::Permissions());
}

void tst_HelperDaemon::firewallTouchesOnlyItsOwnTable()
{
    QFile::remove(path(QStringLiteral("nft.calls")));
    QCOMPARE(WireClient::result(m_port,
                                WireClient::firewall(HelperWire::FirewallOn,
                                                     QStringLiteral("127.0.0.1;10.1.2.3"),
                                                     QStringLiteral("tun0"),
                                                     FIREWALL_PARAMETERS {true, true, true, false, false})),
             1);
    QCOMPARE(WireClient::result(m_port, WireClient::packet(HelperWire::FirewallOff)), 1);
    QFile calls(path(QStringLiteral("nft.calls")));
    QVERIFY(calls.open(QIODevice::ReadOnly));
    const QByteArray text = calls.readAll();
    QVERIFY(text.contains("10.1.2.3/32"));
    QVERIFY(text.contains("oifname \"tun0\" accept"));
    QCOMPARE(text.count("table "), text.count("table inet tavrin"));
    QVERIFY(!text.contains("flush ruleset"));
}

void tst_HelperDaemon::silentClientDoesNotStallOthers()
{
    QTcpSocket silent;
    silent.connectToHost(QStringLiteral("127.0.0.1"), m_port);
    QVERIFY(silent.waitForConnected());
    silent.write(QByteArray(10, '\0'));
    QVERIFY(silent.waitForBytesWritten());

    // Answered while the silent one is still waiting for its time-out.
    QCOMPARE(WireClient::result(m_port, WireClient::packet(HelperWire::TimezoneChangeSupported)), 1);
    QCOMPARE(silent.state(), QAbstractSocket::ConnectedState);
    QTRY_COMPARE_WITH_TIMEOUT(silent.state(), QAbstractSocket::UnconnectedState, 8000);
    QCOMPARE(silent.bytesAvailable(), qint64(0));
}

void tst_HelperDaemon::firewallComesBackAfterARestart()
{
    const QString calls = path(QStringLiteral("nft.calls"));
    QCOMPARE(WireClient::result(m_port, WireClient::packet(HelperWire::FirewallEnableOnStart)), 1);
    QCOMPARE(WireClient::result(m_port,
                                WireClient::firewall(HelperWire::FirewallOn,
                                                     QStringLiteral("10.9.8.7"),
                                                     QStringLiteral("tun0"),
                                                     FIREWALL_PARAMETERS {true, false, false, false, true})),
             1);
    QFile::remove(calls);
    restartDaemon();
    QTRY_VERIFY(readAll(calls).contains("10.9.8.7/32"));

    // Switched off, nothing is put back at the next start.
    QCOMPARE(WireClient::result(m_port, WireClient::packet(HelperWire::FirewallOff)), 1);
    QFile::remove(calls);
    restartDaemon();
    QCOMPARE(WireClient::result(m_port, WireClient::packet(HelperWire::TimezoneChangeSupported)), 1);
    QVERIFY(!QFile::exists(calls));
}

QTEST_GUILESS_MAIN(tst_HelperDaemon)
#include "tst_HelperDaemon.moc"
