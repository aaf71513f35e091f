#include <QtTest>

#include "FakeService.h"
#include "LocalSettings.h"
#include "NetworkManager.h"
#include "TestEnvironment.h"

// Small builders for hand-made service answers: Base64 payloads as the service sends them.
namespace {

QByteArray b64(const QString& text)
{
    return text.toUtf8().toBase64();
}

QByteArray document(const QByteArray& children)
{
    return "<?xml version=\"1.0\"?><response>" + children + "</response>";
}

QByteArray element(const char* tag, const QString& text)
{
    return QByteArray("<") + tag + '>' + b64(text) + "</" + tag + '>';
}

QByteArray file(const QString& user, const QString& pass, const QString& exp)
{
    return "<file user=\"" + b64(user) + "\" pass=\"" + b64(pass) + "\" exp=\"" + b64(exp) + "\"/>";
}

QByteArray vpn(const QString& name, const QString& user, const QByteArray& extra = QByteArray())
{
    return "<vpn name=\"" + b64(name) + "\" ip=\"" + b64(QStringLiteral("192.0.2.1")) + "\" user=\"" + b64(user) + "\" "
        + extra + "/>";
}

} // namespace

// The service client against the fake service over real HTTPS on loopback.
class TestNetworkManager : public QObject
{
    Q_OBJECT

    FakeService m_service;

    NetworkManager* client() { return NetworkManager::instance(); }

    int signIn(const QString& user = QStringLiteral("demo"), const QString& password = QStringLiteral("demo"))
    {
        return signInAndWait(client(), user, password);
    }

    void chooseLogin(const QString& login) { LocalSettings::instance()->setValue(Keys::VpnLogin, login); }

private slots:
    void initTestCase() { useFakeService(m_service); }

    void init()
    {
        NetworkManager::resetInstance();
        LocalSettings::resetInstance();
        QFile::remove(LocalSettings::instance()->fileName());
        LocalSettings::resetInstance();
        m_service.reset();
        m_service.setFixture(FakeFixture::demo());
    }

    // The refusals the sign-in page shows are driven through the main window's tests.
    void signInOutcomes_data()
    {
        QTest::addColumn<QString>("accountType");
        QTest::addColumn<QString>("error");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("code");
        const QString full = QStringLiteral("full");
        QTest::newRow("lite mark on ver") << "lite" << QString() << QByteArray() << int(NetworkManager::LiteAccount);
        QTest::newRow("other service error")
            << full << "account blocked" << QByteArray() << int(NetworkManager::NetworkFailure);
        QTest::newRow("invalid Base64 in auth")
            << full << QString() << document("<ver>" + b64(QStringLiteral("true")) + "</ver><auth>!!%%</auth>")
            << int(NetworkManager::WrongLogin);
    }
    void signInOutcomes()
    {
        QFETCH(QString, accountType);
        QFETCH(QString, error);
        QFETCH(QByteArray, body);
        m_service.fixture().accountType = accountType;
        m_service.fixture().error = error;
        m_service.setConnectBody(body);
        QSignalSpy auth(client(), &NetworkManager::auth);
        QTEST(signIn(), "code");
        QCOMPARE(auth.at(0).at(1).toString(), error);
    }

    void serverAttributes_data()
    {
        QTest::addColumn<QByteArray>("attributes");
        QTest::addColumn<QStringList>("tcpPorts");
        QTest::addColumn<QStringList>("udpPorts");
        QTest::addColumn<int>("sslPort");
        const QByteArray udp = "udp=\"" + b64(QStringLiteral("1194")) + "\" ";
        const QStringList u1194 {QStringLiteral("1194")};
        const QStringList absent {QString()};
        auto attr = [](const char* name, const char* value) {
            return QByteArray(name) + "=\"" + b64(QString::fromLatin1(value)) + "\" ";
        };
        QTest::newRow("0 first empties the list") << attr("tcp", "0,443") + udp << QStringList() << u1194 << 0;
        QTest::newRow("only an ssl port: tcp and udp get one empty port each")
            << attr("ssl", "443") << absent << absent << 443;
        QTest::newRow("invalid Base64 everywhere")
            << QByteArray("tcp=\"#$%\" udp=\"***\" ssl=\"@@\" group=\"!!\" ") << absent << absent << 0;
    }
    void serverAttributes()
    {
        QFETCH(QByteArray, attributes);
        AccountData account;
        AccountAnswer().readServerList(document(vpn(QStringLiteral("Oslo"), QStringLiteral("u"), attributes)),
                                       &account);
        QCOMPARE(account.servers.size(), 1);
        const ServerInfo s = account.servers.first();
        QTEST(s.tcpPorts, "tcpPorts");
        QTEST(s.udpPorts, "udpPorts");
        QTEST(s.sslPort, "sslPort");
    }

    // 10,000 servers and a 10 MB configuration in one answer.
    void largeAnswer()
    {
        QByteArray children = file(QStringLiteral("big"), QStringLiteral("p"), QStringLiteral("3000000000"));
        for (int i = 0; i < 10000; ++i)
            children += vpn(QStringLiteral("S%1").arg(i), QStringLiteral("big"));
        children += "<config>" + QByteArray(10 * 1024 * 1024, 'x').toBase64() + "</config>";
        m_service.setConnectBody(document(children));
        QCOMPARE(signIn(), int(NetworkManager::LiteAccount));
        chooseLogin(QStringLiteral("big"));
        QCOMPARE(client()->servers().size(), 10000);
        QCOMPARE(client()->getConfigOVPNbyServer(QString()).size(), 10 * 1024 * 1024);
    }

    // A refresh takes only the account data; a failed one still reports success and saves the list it has.
    void refreshTakesOnlyTheAccountData()
    {
        QCOMPARE(signIn(), int(NetworkManager::Success));
        // A late ping result of the start-up pass can still end the sign-in pass with its own serverUpdated.
        QTest::qWait(500);
        QSignalSpy auth(client(), &NetworkManager::auth);
        QSignalSpy updated(client(), &NetworkManager::serverUpdated);
        m_service.setConnectBody(document("<ver>" + b64(QStringLiteral("false")) + "</ver>"
                                          + element("auth", QStringLiteral("false"))
                                          + element("error", QStringLiteral("nosub"))
                                          + file(QStringLiteral("n"), QStringLiteral("pn"), QStringLiteral("0"))
                                          + vpn(QStringLiteral("Only"), QStringLiteral("n"))));
        chooseLogin(QStringLiteral("n"));
        client()->serverListRequest();
        QVERIFY(updated.wait(30000));
        QCOMPARE(updated.at(0).at(0).toInt(), int(NetworkManager::Success));
        QCOMPARE(auth.count(), 0);
        QCOMPARE(client()->servers().size(), 1);
        QCOMPARE(client()->servers().at(0).password, QStringLiteral("pn"));
        QVERIFY(!client()->getCertifOvpnByUser(QStringLiteral("vpn-demo1")).isEmpty());

        auto store = LocalSettings::instance();
        store->setValue(Keys::CachedServers, QStringList {QStringLiteral("stale")});
        m_service.setFault(FakeService::Fault::HttpError);
        client()->serverListRequest();
        QVERIFY(updated.wait(30000));
        QCOMPARE(updated.at(1).at(0).toInt(), int(NetworkManager::Success));
        QCOMPARE(updated.at(1).at(1).toString(), QString());
        QCOMPARE(client()->servers().size(), 1);
        QCOMPARE(store->value(Keys::CachedServers).toStringList().size(), 1);
    }

    // "N/A" is no zone; a real one is met through the connect page's tests.
    void timezoneNotAvailable()
    {
        m_service.setConnectBody(document(element("timezone", QStringLiteral("N/A"))));
        QSignalSpy got(client(), &NetworkManager::gotIpTimezone);
        client()->ipTimezoneRequest();
        QVERIFY(got.wait(30000));
        QCOMPARE(got.at(0), (QVariantList {QString(), false}));
    }

    void doubleHopLatencyIsAdded()
    {
        FakeFixture& f = m_service.fixture();
        f.servers.resize(3);
        // Double with an extra latency, double without one, standard with one that must not count.
        const char* const names[] = {"Paris - Oslo", "Rome - Bern", "Frankfurt"};
        for (int i = 0; i < 3; ++i) {
            f.servers[i].name = QLatin1String(names[i]);
            f.servers[i].group = QLatin1String(i < 2 ? "2" : "1");
        }
        f.doublePings = {{QStringLiteral("Paris - Oslo"), 25}, {QStringLiteral("Frankfurt"), 7}};
        QCOMPARE(signIn(), int(NetworkManager::Success));
        client()->pingDoubleServerRequest();
        chooseLogin(f.servers[0].user);
        QTRY_VERIFY_WITH_TIMEOUT((client()->onPingServersFinished(), client()->servers().at(0).ping == 25), 10000);
        QCOMPARE(client()->servers().at(1).ping, 0);
        QCOMPARE(client()->servers().at(2).ping, 0);
        const QUrl asked = m_service.requests().constLast();
        QCOMPARE(asked.path(), QStringLiteral("/upd/double.xml"));
        QVERIFY(!asked.hasQuery());
    }

    void requestUrls_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<QStringList>("items");
        const QString head = QStringLiteral("ver=3.6.9|login=me@x|pass=p&s+w d#=|");
        QTest::newRow("sign-in") << QStringLiteral("auth") << (head + QStringLiteral("act=wizardsetup")).split('|');
        QTest::newRow("update check") << QStringLiteral("update")
                                      << (head + QStringLiteral("act=wizardsetup|os=linux-debian")).split('|');
    }
    void requestUrls()
    {
        QFETCH(QString, request);
        NetworkManager* nm = client();
        QVERIFY(signIn(QStringLiteral("me@x"), QStringLiteral("p&s+w d#=")) >= 0);
        m_service.reset();
        if (request == QLatin1String("update"))
            nm->programUpdateRequest();
        else
            nm->authRequest(QStringLiteral("me@x"), QStringLiteral("p&s+w d#="));
        QTRY_COMPARE(m_service.requestCount(), 1);
        const QUrl url = m_service.requests().at(0);
        QCOMPARE(url.path(), QStringLiteral("/connect"));
        QStringList got;
        for (const auto& item : QUrlQuery(url).queryItems(QUrl::FullyDecoded))
            got << item.first + QLatin1Char('=') + item.second;
        QTEST(got, "items");
        QTest::qWait(100); // let the answer land before the next row replaces the client
    }
};

TAVRIN_API_TEST_MAIN(TestNetworkManager)

#include "tst_NetworkManager.moc"
