#include <QtTest>

#include "MakeOVPNFile.h"
#include "TestEnvironment.h"

Q_DECLARE_METATYPE(ConfigServer)

namespace {

QByteArray readData(const char* name)
{
    return readFile(QStringLiteral(TEST_DATA "/") + QLatin1String(name));
}

ConfigServer server(const QString& protocol, const QStringList& ports = {"1194", "1195", "1196"})
{
    ConfigServer config;
    config.protocol = protocol;
    config.ports = ports;
    config.ip = QStringLiteral("10.20.30.40");
    config.cert = readData("client.crt");
    config.key = readData("client.key");
    config.config = readData("template-lf.conf");
    config.stunnelPort = 40123;
    return config;
}

} // namespace

class TestMakeOVPNFile : public QObject
{
    Q_OBJECT

private slots:
    void generatesExpectedFile_data()
    {
        QTest::addColumn<bool>("stealth");
        QTest::addColumn<ConfigServer>("config");
        QTest::addColumn<QString>("expected");
        QTest::newRow("udp: one remote line per port, udp markers active, upper case left")
            << false << server("udp") << "expected-udp.ovpn";
        QTest::newRow("tcp: tcp markers active, udp and stealth stay comments")
            << false << server("tcp", {"443"}) << "expected-tcp.ovpn";
        ConfigServer crlf = server("udp");
        crlf.config.replace("\n", "\r\n");
        QTest::newRow("carriage-return template keeps its carriage returns")
            << false << crlf << "expected-udp-crlf.ovpn";
        QTest::newRow("empty port list writes no remote line")
            << false << server("tcp", {}) << "expected-tcp-no-ports.ovpn";
        ConfigServer withZero = server("udp");
        withZero.config.append('\0').append("#udp after the zero byte\n");
        QTest::newRow("template ends at its first zero byte") << false << withZero << "expected-udp.ovpn";
        QTest::newRow("stealth: local remote, tcp and stealth markers, server route, no final line end")
            << true << server("udp") << "expected-stealth.ovpn";
    }
    void generatesExpectedFile()
    {
        QFETCH(bool, stealth);
        QFETCH(ConfigServer, config);
        QFETCH(QString, expected);
        QString path;
        {
            MakeOVPNFile file;
            QVERIFY(stealth ? file.generateStunnel(config) : file.generate(config));
            QVERIFY(file.generated);
            path = file.configFileName;
            QCOMPARE(readFile(path), readFile(QStringLiteral(EXPECTED_DATA "/") + expected));
            // The file holds the private key: nobody but the user may read it.
            QCOMPARE(QFileInfo(path).permissions() & 0x00FF, QFile::Permissions());
        }
        QVERIFY(!QFile::exists(path)); // the file goes with the object
    }

    void regeneratingLeavesNoTail()
    {
        MakeOVPNFile file;
        ConfigServer longer = server("udp");
        longer.config.append(QByteArray(4096, '#')).append('\n');
        QVERIFY(file.generate(longer));
        const QString firstPath = file.configFileName;
        QVERIFY(file.generateStunnel(server("udp")));
        QCOMPARE(file.configFileName, firstPath);
        QCOMPARE(readFile(file.configFileName), readFile(QStringLiteral(EXPECTED_DATA "/expected-stealth.ovpn")));
        // Discarded, the key is gone; the next connection writes a new file under a new name.
        file.discard();
        QVERIFY(!QFile::exists(firstPath));
        QVERIFY(file.generate(server("udp")));
        QVERIFY(file.configFileName != firstPath && QFile::exists(file.configFileName));
        // At the next start, a crashed run's file goes; a file of another name stays.
        file.setAutoRemove(false);
        const QString left = file.configFileName;
        file.close();
        const QString other = QDir::temp().filePath(QCoreApplication::applicationName() + QStringLiteral(".notes.txt"));
        QVERIFY(QFile(other).open(QIODevice::WriteOnly));
        MakeOVPNFile::removeLeftovers();
        QVERIFY(!QFile::exists(left));
        QVERIFY(QFile::remove(other));
    }
};

QTEST_GUILESS_MAIN(TestMakeOVPNFile)
#include "tst_MakeOVPNFile.moc"
