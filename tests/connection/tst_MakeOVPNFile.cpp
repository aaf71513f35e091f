#include <QtTest>

#include "MakeOVPNFile.h"

Q_DECLARE_METATYPE(ConfigServer)

namespace {

QByteArray readData(const QString& name)
{
    QFile file(QStringLiteral(TEST_DATA "/ovpn/") + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing test data %s", qPrintable(name));
    return file.readAll();
}

ConfigServer server(const QString& protocol, const QStringList& ports, const QString& templateName)
{
    ConfigServer config;
    config.protocol = protocol;
    config.ports = ports;
    config.ip = QStringLiteral("10.20.30.40");
    config.cert = readData(QStringLiteral("client.crt"));
    config.key = readData(QStringLiteral("client.key"));
    config.config = readData(templateName);
    config.stunnelPort = 40123;
    return config;
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
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

        const QStringList udpPorts {"1194", "1195", "1196"};
        QTest::newRow("udp: one remote line per port, udp markers active, upper case left")
            << false << server("udp", udpPorts, "template-lf.conf") << "expected-udp.ovpn";
        QTest::newRow("tcp: tcp markers active, udp and stealth stay comments")
            << false << server("tcp", {"443"}, "template-lf.conf") << "expected-tcp.ovpn";
        QTest::newRow("carriage-return template keeps its carriage returns")
            << false << server("udp", udpPorts, "template-crlf.conf") << "expected-udp-crlf.ovpn";
        QTest::newRow("empty port list writes no remote line")
            << false << server("tcp", {}, "template-lf.conf") << "expected-tcp-no-ports.ovpn";
        ConfigServer withZero = server("udp", udpPorts, "template-lf.conf");
        withZero.config.append('\0').append("#udp after the zero byte\n");
        QTest::newRow("template ends at its first zero byte") << false << withZero << "expected-udp.ovpn";
        QTest::newRow("stealth: local remote, tcp and stealth markers, server route, no final line end")
            << true << server("udp", udpPorts, "template-lf.conf") << "expected-stealth.ovpn";
    }
    void generatesExpectedFile()
    {
        QFETCH(bool, stealth);
        QFETCH(ConfigServer, config);
        QFETCH(QString, expected);

        MakeOVPNFile file;
        QVERIFY(file.configFileName.isEmpty());
        const bool result = stealth ? file.generateStunnel(config) : file.generate(config);
        QVERIFY(result);
        QVERIFY(file.generated);
        QVERIFY(!file.configFileName.isEmpty());
        QCOMPARE(contents(file.configFileName), readData(expected));
    }

    void keyFileIsOwnerOnly()
    {
        MakeOVPNFile file;
        QVERIFY(file.generate(server("udp", {"1194"}, "template-lf.conf")));
        const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther
            | QFile::WriteOther | QFile::ExeOther;
        QCOMPARE(QFileInfo(file.configFileName).permissions() & others, QFile::Permissions());
    }

    void regeneratingLeavesNoTail_data()
    {
        QTest::addColumn<bool>("secondStealth");
        QTest::addColumn<QString>("expected");
        QTest::newRow("shorter direct file after a long one") << false << "expected-tcp-no-ports.ovpn";
        QTest::newRow("stealth file after a direct one") << true << "expected-stealth.ovpn";
    }
    void regeneratingLeavesNoTail()
    {
        QFETCH(bool, secondStealth);
        QFETCH(QString, expected);

        MakeOVPNFile file;
        ConfigServer longer = server("udp", {"1194", "1195", "1196"}, "template-lf.conf");
        longer.config.append(QByteArray(4096, '#')).append('\n');
        QVERIFY(file.generate(longer));
        const QString firstPath = file.configFileName;

        const ConfigServer second = secondStealth ? server("udp", {"1194", "1195", "1196"}, "template-lf.conf")
                                                  : server("tcp", {}, "template-lf.conf");
        QVERIFY(secondStealth ? file.generateStunnel(second) : file.generate(second));
        QCOMPARE(file.configFileName, firstPath);
        QCOMPARE(contents(file.configFileName), readData(expected));
    }

    void fileGoesWithTheObject()
    {
        QString path;
        {
            MakeOVPNFile file;
            QVERIFY(file.generate(server("udp", {"1194"}, "template-lf.conf")));
            path = file.configFileName;
            QVERIFY(QFile::exists(path));
        }
        QVERIFY(!QFile::exists(path));
    }

    void unopenableFileReportsFalse()
    {
        MakeOVPNFile file;
        file.setFileTemplate(QStringLiteral("/nonexistent-directory-for-tavrin/tavrin.XXXXXX"));
        QVERIFY(!file.generate(server("udp", {"1194"}, "template-lf.conf")));
        QVERIFY(!file.generated);
        QVERIFY(!file.generateStunnel(server("udp", {"1194"}, "template-lf.conf")));
        QVERIFY(!file.generated);
    }
};

QTEST_GUILESS_MAIN(TestMakeOVPNFile)
#include "tst_MakeOVPNFile.moc"
