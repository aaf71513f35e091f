// The daemon as a process: the wire protocol, the refusals, and what the accepted requests do.
// OpenVPN (first on PATH) and nft (TAVRIN_HELPERD_NFT) are stand-ins here; the real ones run in the e2e test.

#include "WireClient.h"

#include <QtTest>

class tst_HelperDaemon : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(QDir().mkpath(path("bin")) && QDir().mkpath(path("root/etc")));
        QVERIFY(QFile::link(QStringLiteral("/usr/share/zoneinfo/UTC"), path("root/etc/localtime")));
        // Stand-ins record how they were called. OpenVPN's also asks the daemon to switch the
        // firewall off, as root, the way a relay through OpenVPN would, then opens its management port.
        QVERIFY(WireClient::writeFile(path("bin/openvpn"),
                                      "#!/bin/sh\necho \"$$ $*\" >> " + path("openvpn.calls").toUtf8() + "\n"
                                          + TAVRIN_WIRE_TOOL + " firewall-off " + QByteArray::number(m_port) + " > "
                                          + path("relay.answer").toUtf8() + "\nexec " + TAVRIN_WIRE_TOOL
                                          + " listen \"$5\" 60\n",
                                      WireClient::Program));
        QVERIFY(WireClient::writeFile(path("bin/nft"),
                                      "#!/bin/sh\necho \"$*\" >> " + path("nft.calls").toUtf8() + "\ncat >> "
                                          + path("nft.calls").toUtf8() + "\n",
                                      WireClient::Program));
        const QByteArray good = "client\ndev tun\nproto udp\nremote 10.0.0.1 1194\n<ca>\n-----BEGIN CERTIFICATE-----\n"
                                "MIIB\n-----END CERTIFICATE-----\n</ca>\n";
        QVERIFY(WireClient::writeFile(path("good.ovpn"), good));
        connect(&m_daemon, &QProcess::readyRead, this, [this] { m_log += m_daemon.readAll(); });
        startDaemon();
    }

    void cleanupTestCase()
    {
        m_daemon.terminate();
        QVERIFY(m_daemon.waitForFinished(10000));
        // Every OpenVPN stand-in it started went with it.
        for (const QByteArray& call : WireClient::readFile(path("openvpn.calls")).trimmed().split('\n')) {
            const QString pid = QString::fromLatin1(call.split(' ').first());
            QVERIFY2(pid.isEmpty() || !QFileInfo::exists(QStringLiteral("/proc/") + pid), qPrintable(pid));
        }
    }

    void refusesAttacks_data()
    {
        QTest::addColumn<QByteArray>("request");

        const FIREWALL_PARAMETERS kill {true, false, false, false, false};
        QTest::newRow("unknown command") << WireClient::packet(99);
        QTest::newRow("request one byte too long") << WireClient::packet(7) + QByteArray(1, '\0');
        QTest::newRow("zone leaving the database") << WireClient::timezone(false, "../../etc/passwd");
        QTest::newRow("firewall address that is no address") << WireClient::firewall(
            1, QStringLiteral("127.0.0.1;1.2.3.4 } ; flush ruleset"), QStringLiteral("tun0"), kill);
    }

    void refusesAttacks()
    {
        QFETCH(QByteArray, request);
        QFile::remove(path("openvpn.calls"));
        QFile::remove(path("nft.calls"));
        QVERIFY2(ask(request) <= 0, "the daemon said yes");
        QVERIFY(!QFile::exists(path("openvpn.calls")));
        QVERIFY(!QFile::exists(path("nft.calls")));
    }

    void timezoneChangeAndRestore()
    {
        QCOMPARE(ask(HelperWire::TimezoneChangeSupported), 1);
        const QString localtime = path("root/etc/localtime");
        QCOMPARE(ask(WireClient::timezone(false, "Asia/Tokyo")), 1);
        QCOMPARE(QFileInfo(localtime).symLinkTarget(), QStringLiteral("/usr/share/zoneinfo/Asia/Tokyo"));
        // The machine's own zone comes back.
        QCOMPARE(ask(WireClient::timezone(true, "")), 1);
        QCOMPARE(QFileInfo(localtime).symLinkTarget(), QStringLiteral("/usr/share/zoneinfo/UTC"));
    }

    void startsOpenVpnWithTheCheckedConfiguration()
    {
        const QString calls = path("openvpn.calls");
        QFile::remove(calls);
        const QString arguments = WireClient::openVpnArguments(path("good.ovpn"), 41234);
        QCOMPARE(ask(WireClient::openVpn(arguments)), 1);
        QTRY_VERIFY(QFileInfo(calls).size() > 0);
        QCOMPARE(ask(WireClient::openVpn(arguments)), 1);
        QTRY_COMPARE(WireClient::readFile(calls).count('\n'), 2);

        const QList<QByteArray> lines = WireClient::readFile(calls).trimmed().split('\n');
        const QByteArray copy = QFile::encodeName(path("root/var/lib/tavrin-helperd/openvpn.conf"));
        const QByteArray expected = "--config " + copy
            + " --management 127.0.0.1 41234 --management-query-passwords --script-security 2 --up "
            + TAVRIN_RESOLVER_SCRIPT + " --down " + TAVRIN_RESOLVER_SCRIPT;
        for (const QByteArray& line : lines)
            QVERIFY2(line.contains(expected), line.constData());
        // One OpenVPN at a time: the first was stopped by the second start.
        QTRY_VERIFY(
            !QFileInfo::exists(QStringLiteral("/proc/") + QString::fromLatin1(lines.first().split(' ').first())));
        QFile conf(QFile::decodeName(copy));
        QVERIFY(conf.exists());
        QCOMPARE(conf.permissions() & (QFileDevice::ReadOther | QFileDevice::ReadGroup), QFileDevice::Permissions());
        // Root as far as the kernel knows, but started by the daemon: refused.
        QTRY_COMPARE(WireClient::readFile(path("relay.answer")), QByteArray("no\n"));
    }

    void silentClientDoesNotStallOthers()
    {
        QTcpSocket silent;
        silent.connectToHost(QStringLiteral("127.0.0.1"), m_port);
        QVERIFY(silent.waitForConnected());
        silent.write(QByteArray(10, '\0'));
        QVERIFY(silent.waitForBytesWritten());
        // Answered while the silent one is still waiting for its time-out.
        QCOMPARE(ask(HelperWire::TimezoneChangeSupported), 1);
        QCOMPARE(silent.state(), QAbstractSocket::ConnectedState);
        QTRY_COMPARE_WITH_TIMEOUT(silent.state(), QAbstractSocket::UnconnectedState, 8000);
        QCOMPARE(silent.bytesAvailable(), qint64(0));
    }

    void firewallComesBackAfterARestart()
    {
        const QString calls = path("nft.calls");
        QCOMPARE(ask(HelperWire::FirewallEnableOnStart), 1);
        QCOMPARE(ask(WireClient::firewall(HelperWire::FirewallOn,
                                          QStringLiteral("10.9.8.7"),
                                          QStringLiteral("tun0"),
                                          FIREWALL_PARAMETERS {true, false, false, false, true})),
                 1);
        QFile::remove(calls);
        startDaemon();
        QTRY_VERIFY(WireClient::readFile(calls).contains("10.9.8.7/32"));

        // Switched off, nothing is put back at the next start.
        QCOMPARE(ask(HelperWire::FirewallOff), 1);
        QFile::remove(calls);
        startDaemon();
        QCOMPARE(ask(HelperWire::TimezoneChangeSupported), 1);
        QVERIFY(!WireClient::readFile(calls).contains("10.9.8.7"));
    }

private:
    void startDaemon()
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("PATH"), path("bin") + QLatin1Char(':') + env.value(QStringLiteral("PATH")));
        env.insert(QStringLiteral("TAVRIN_HELPERD_ROOT"), path("root"));
        env.insert(QStringLiteral("TAVRIN_HELPERD_NFT"), path("bin/nft"));
        env.insert(QStringLiteral("TAVRIN_HELPERD_SCRIPT"), QStringLiteral(TAVRIN_RESOLVER_SCRIPT));
        m_daemon.terminate();
        QVERIFY(m_daemon.state() == QProcess::NotRunning || m_daemon.waitForFinished(10000));
        m_log.clear();
        m_daemon.setProcessEnvironment(env);
        m_daemon.setProcessChannelMode(QProcess::MergedChannels);
        m_daemon.start(QStringLiteral(TAVRIN_HELPERD_PATH),
                       {"--port", QString::number(m_port), "--request-timeout", "2000"});
        QVERIFY(m_daemon.waitForStarted());
        QTRY_VERIFY(m_log.contains("listening on 127.0.0.1"));
    }

    QString path(const char* name) const { return m_dir.filePath(QLatin1String(name)); }
    int ask(const QByteArray& request) const { return WireClient::result(m_port, request); }
    int ask(std::uint32_t command) const { return ask(WireClient::packet(command)); }

    QTemporaryDir m_dir;
    QProcess m_daemon;
    QByteArray m_log;
    quint16 m_port = WireClient::freePort();
};

QTEST_GUILESS_MAIN(tst_HelperDaemon)
#include "tst_HelperDaemon.moc"
