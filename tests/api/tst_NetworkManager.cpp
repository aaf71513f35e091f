#include <QtTest>

#include <QDomDocument>

#include "AccountDocuments.h"
#include "ApiTestEnvironment.h"
#include "FakeAnswers.h"
#include "FakeService.h"
#include "LocalSettings.h"
#include "NetworkManager.h"

using namespace AccountDocuments;

Q_DECLARE_METATYPE(FakeService::Fault)

// The service client against the fake service over real HTTPS on loopback.
class TestNetworkManager : public QObject
{
    Q_OBJECT

private:
    FakeService m_service;

    NetworkManager* client() { return NetworkManager::instance(); }

    QPair<int, QString> signIn(const QString& user = QStringLiteral("demo"),
                               const QString& password = QStringLiteral("demo"))
    {
        QSignalSpy auth(client(), &NetworkManager::auth);
        client()->authRequest(user, password);
        if (!auth.wait(30000))
            return {-1, QString()};
        return {auth.at(0).at(0).toInt(), auth.at(0).at(1).toString()};
    }

    void chooseLogin(const QString& login) { LocalSettings::instance()->setValue(Keys::VpnLogin, login); }

    static ServerInfo parse(NetworkManager* client, const QByteArray& vpnElement)
    {
        QDomDocument doc;
        doc.setContent(vpnElement);
        QDomNode node = doc.documentElement();
        return client->parseServer(&node);
    }

private slots:
    void initTestCase()
    {
        QString error;
        QVERIFY2(m_service.start(0, &error), qPrintable(error));
        qputenv("TAVRIN_API_URL", m_service.baseUrl().toUtf8());
    }

    void init()
    {
        NetworkManager::resetInstance();
        LocalSettings::resetInstance();
        QFile::remove(LocalSettings::instance()->fileName());
        LocalSettings::resetInstance();
        m_service.reset();
        m_service.setFixture(FakeFixture::demo());
    }

    void signInOutcomes_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("accountType");
        QTest::addColumn<bool>("versionAccepted");
        QTest::addColumn<QString>("serviceError");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<FakeService::Fault>("fault");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("message");
        const QString demo = QStringLiteral("demo");
        const QString full = QStringLiteral("full");
        const auto none = FakeService::Fault::None;
        QTest::newRow("full account") << demo << full << true << QString() << QByteArray() << none
                                      << int(NetworkManager::Success) << QString();
        QTest::newRow("lite mark on ver") << demo << QStringLiteral("lite") << true << QString() << QByteArray() << none
                                          << int(NetworkManager::LiteAccount) << QString();
        QTest::newRow("another type is a full account")
            << demo << QStringLiteral("premium") << true << QString() << QByteArray() << none
            << int(NetworkManager::Success) << QString();
        QTest::newRow("no ver element counts as lite")
            << demo << full << true << QString() << document(element("auth", QStringLiteral("true"))) << none
            << int(NetworkManager::LiteAccount) << QString();
        QTest::newRow("wrong password") << QStringLiteral("nope") << full << true << QString() << QByteArray() << none
                                        << int(NetworkManager::WrongLogin) << QString();
        QTest::newRow("refused client version") << demo << full << false << QString() << QByteArray() << none
                                                << int(NetworkManager::BadVersion) << QString();
        QTest::newRow("no subscription") << demo << full << true << QStringLiteral("nosub") << QByteArray() << none
                                         << int(NetworkManager::NoSubscription) << QStringLiteral("nosub");
        QTest::newRow("other service error")
            << demo << full << true << QStringLiteral("account blocked") << QByteArray() << none
            << int(NetworkManager::NetworkFailure) << QStringLiteral("account blocked");
        QTest::newRow("transport gives up")
            << demo << full << true << QString() << QByteArray() << FakeService::Fault::HttpError
            << int(NetworkManager::NetworkFailure) << QStringLiteral("*");
        QTest::newRow("answer that is not XML")
            << demo << full << true << QString() << QByteArray() << FakeService::Fault::NotXml
            << int(NetworkManager::LiteAccount) << QString();
        QTest::newRow("empty answer") << demo << full << true << QString() << QByteArray() << FakeService::Fault::Empty
                                      << int(NetworkManager::LiteAccount) << QString();
        QTest::newRow("invalid Base64 in auth")
            << demo << full << true << QString()
            << document("<ver>" + b64(QStringLiteral("true")) + "</ver><auth>!!%%</auth>") << none
            << int(NetworkManager::WrongLogin) << QString();
    }
    void signInOutcomes()
    {
        QFETCH(QString, password);
        QFETCH(QString, accountType);
        QFETCH(bool, versionAccepted);
        QFETCH(QString, serviceError);
        QFETCH(QByteArray, body);
        QFETCH(FakeService::Fault, fault);
        QFETCH(int, code);
        QFETCH(QString, message);
        m_service.fixture().accountType = accountType;
        m_service.fixture().versionAccepted = versionAccepted;
        m_service.fixture().error = serviceError;
        m_service.setConnectBody(body);
        m_service.setFault(fault);

        const auto outcome = signIn(QStringLiteral("demo"), password);
        QCOMPARE(outcome.first, code);
        if (message == QLatin1String("*"))
            QVERIFY(!outcome.second.isEmpty());
        else
            QCOMPARE(outcome.second, message);
    }

    void stoppingElementKeepsEarlierChangesButSavesNothing()
    {
        auto store = LocalSettings::instance();
        store->setValue(Keys::CachedConfig, QByteArray("cached"));
        m_service.setConnectBody(document(element("config", QStringLiteral("fresh")) + "<ver>"
                                          + b64(QStringLiteral("false")) + "</ver>"
                                          + element("config", QStringLiteral("never"))));
        QCOMPARE(signIn().first, int(NetworkManager::BadVersion));
        QCOMPARE(client()->getConfigOVPNbyServer(QStringLiteral("any")), QByteArray("fresh"));
        QCOMPARE(store->value(Keys::CachedConfig).toByteArray(), QByteArray("cached"));
    }

    void signInFillsTheAccount()
    {
        QCOMPARE(signIn().first, int(NetworkManager::Success));
        NetworkManager* nm = client();
        QCOMPARE(nm->cacheUsers(), (QStringList {QStringLiteral("vpn-demo1"), QStringLiteral("vpn-demo2")}));
        const Subscription second = nm->subscription(QStringLiteral("vpn-demo2"));
        QCOMPARE(second.password(), QStringLiteral("secret2"));
        QCOMPARE(second.expiresTime().toSecsSinceEpoch(), qint64(1811808000));
        QVERIFY(nm->subscription(QStringLiteral("nobody")).login().isEmpty());
        QCOMPARE(nm->getConfigOVPNbyServer(QString()), FakeFixture::demo().config);
        QCOMPARE(nm->getCertifOvpnByUser(QStringLiteral("vpn-demo1")), FakeFixture::demo().logins[0].cert);
        QCOMPARE(nm->getKeyOvpnByUser(QStringLiteral("vpn-demo2")), FakeFixture::demo().logins[1].key);
        QVERIFY(nm->getCertifOvpnByUser(QStringLiteral("nobody")).isEmpty());

        chooseLogin(QStringLiteral("vpn-demo2"));
        const QVector<ServerInfo> mine = nm->servers();
        QCOMPARE(mine.size(), 3);
        for (const ServerInfo& s : mine) {
            QCOMPARE(s.user, QStringLiteral("vpn-demo2"));
            QCOMPARE(s.password, QStringLiteral("secret2"));
            QCOMPARE(s.protocol, OpenVpnUdp);
        }
        QCOMPARE(mine[0].name, QStringLiteral("London"));
        QCOMPARE(mine[2].type, ServerInfo::Double);
        chooseLogin(QStringLiteral("vpn-demo1"));
        QCOMPARE(nm->servers().size(), 7);
        chooseLogin(QStringLiteral("stale-login"));
        QVERIFY(nm->servers().isEmpty());
        chooseLogin(QString());
        QVERIFY(nm->servers().isEmpty());
    }

    void fileAndVpnOrder_data()
    {
        QTest::addColumn<QByteArray>("children");
        QTest::addColumn<QStringList>("users");
        QTest::addColumn<QString>("serverUser");
        QTest::addColumn<QString>("serverPassword");
        const QString a = QStringLiteral("a");
        const QString b = QStringLiteral("b");
        const QString pa = QStringLiteral("pa");
        const QString pb = QStringLiteral("pb");
        const QString zero = QStringLiteral("0");
        QTest::newRow("two files before the first vpn keep only the second")
            << (file(a, pa, zero) + file(b, pb, zero) + vpn(QStringLiteral("S"), b)) << QStringList {b} << b << pb;
        QTest::newRow("files after a vpn accumulate")
            << (file(a, pa, zero) + vpn(QStringLiteral("S"), a) + file(b, pb, zero)) << QStringList {a, b} << a << pa;
        QTest::newRow("server before its file has no password")
            << (vpn(QStringLiteral("S"), a) + file(a, pa, zero)) << QStringList {a} << a << QString();
        QTest::newRow("server of a login without file adds an empty entry")
            << (file(a, pa, zero) + vpn(QStringLiteral("S"), b)) << QStringList {a, b} << b << QString();
    }
    void fileAndVpnOrder()
    {
        QFETCH(QByteArray, children);
        QFETCH(QStringList, users);
        QFETCH(QString, serverUser);
        QFETCH(QString, serverPassword);
        m_service.setConnectBody(document(children));
        QCOMPARE(signIn().first, int(NetworkManager::LiteAccount));
        QCOMPARE(client()->cacheUsers(), users);
        chooseLogin(serverUser);
        QCOMPARE(client()->servers().size(), 1);
        QCOMPARE(client()->servers().at(0).password, serverPassword);
    }

    void serverAttributes_data()
    {
        QTest::addColumn<QByteArray>("attributes");
        QTest::addColumn<QStringList>("tcpPorts");
        QTest::addColumn<QStringList>("udpPorts");
        QTest::addColumn<int>("sslPort");
        QTest::addColumn<int>("type");
        const QByteArray udp = "udp=\"" + b64(QStringLiteral("1194")) + "\" ";
        const QStringList u1194 {QStringLiteral("1194")};
        const QStringList absent {QString()};
        const int standard = ServerInfo::Standart;
        auto attr = [](const char* name, const char* value) {
            return QByteArray(name) + "=\"" + b64(QString::fromLatin1(value)) + "\" ";
        };
        QTest::newRow("tcp 0 means no tcp") << attr("tcp", "0") + udp << QStringList() << u1194 << 0 << standard;
        QTest::newRow("0 first empties the list")
            << attr("tcp", "0,443") + udp << QStringList() << u1194 << 0 << standard;
        QTest::newRow("0 later is an ordinary port")
            << attr("tcp", "443,0") + udp << QStringList {QStringLiteral("443"), QStringLiteral("0")} << u1194 << 0
            << standard;
        QTest::newRow("empty parts are kept")
            << attr("tcp", "80,,88") + udp << QStringList {QStringLiteral("80"), QString(), QStringLiteral("88")}
            << u1194 << 0 << standard;
        QTest::newRow("missing tcp and udp give one empty port each")
            << QByteArray() << absent << absent << 0 << standard;
        QTest::newRow("udp 0 means no udp") << attr("udp", "0") << absent << QStringList() << 0 << standard;
        QTest::newRow("stealth port") << attr("ssl", "443") << absent << absent << 443 << standard;
        QTest::newRow("ssl that is no number") << attr("ssl", "4x3") << absent << absent << 0 << standard;
        QTest::newRow("group 2 is double-hop")
            << attr("group", "2") << absent << absent << 0 << int(ServerInfo::Double);
        QTest::newRow("group 1 is standard") << attr("group", "1") << absent << absent << 0 << standard;
        QTest::newRow("group 3 is standard") << attr("group", "3") << absent << absent << 0 << standard;
        QTest::newRow("invalid Base64 everywhere")
            << QByteArray("tcp=\"#$%\" udp=\"***\" ssl=\"@@\" group=\"!!\" ") << absent << absent << 0 << standard;
    }
    void serverAttributes()
    {
        QFETCH(QByteArray, attributes);
        QFETCH(QStringList, tcpPorts);
        QFETCH(QStringList, udpPorts);
        QFETCH(int, sslPort);
        QFETCH(int, type);
        const ServerInfo s = parse(client(), vpn(QStringLiteral("Oslo"), QStringLiteral("u"), attributes));
        QCOMPARE(s.name, QStringLiteral("Oslo"));
        QCOMPARE(s.title, QStringLiteral("Oslo"));
        QCOMPARE(s.tcpPorts, tcpPorts);
        QCOMPARE(s.udpPorts, udpPorts);
        QCOMPARE(s.sslPort, sslPort);
        QCOMPARE(int(s.type), type);
        QCOMPARE(s.ping, 0);
        QVERIFY(!s.favorite);
    }

    void expiryThatIsNoNumberIsTheEpoch()
    {
        m_service.setConnectBody(document(file(QStringLiteral("a"), QStringLiteral("p"), QStringLiteral("soon"))
                                          + file(QStringLiteral("b"), QStringLiteral("p"), QStringLiteral("3000000000"))
                                          + vpn(QStringLiteral("S"), QStringLiteral("b"))
                                          + file(QStringLiteral("c"), QStringLiteral("p"), QStringLiteral("soon"))));
        QCOMPARE(signIn().first, int(NetworkManager::LiteAccount));
        // Past 2038 does not fit the 32-bit count either.
        QCOMPARE(client()->subscription(QStringLiteral("b")).expiresTime().toSecsSinceEpoch(), qint64(0));
        QCOMPARE(client()->subscription(QStringLiteral("c")).expiresTime().toSecsSinceEpoch(), qint64(0));
    }

    void largeAnswers_data()
    {
        QTest::addColumn<int>("servers");
        QTest::addColumn<int>("configBytes");
        QTest::newRow("10,000 vpn elements") << 10000 << 10;
        QTest::newRow("10 MB answer") << 1 << 10 * 1024 * 1024;
    }
    void largeAnswers()
    {
        QFETCH(int, servers);
        QFETCH(int, configBytes);
        QByteArray children = file(QStringLiteral("big"), QStringLiteral("p"), QStringLiteral("0"));
        for (int i = 0; i < servers; ++i)
            children += vpn(QStringLiteral("S%1").arg(i), QStringLiteral("big"));
        children += "<config>" + QByteArray(configBytes, 'x').toBase64() + "</config>";
        m_service.setConnectBody(document(children));
        QCOMPARE(signIn().first, int(NetworkManager::LiteAccount));
        chooseLogin(QStringLiteral("big"));
        QCOMPARE(client()->servers().size(), servers);
        QCOMPARE(client()->getConfigOVPNbyServer(QString()).size(), configBytes);
    }

    void refreshAfterFailureStillSavesAndReports()
    {
        QCOMPARE(signIn().first, int(NetworkManager::Success));
        // A late ping result of the start-up pass can still end the sign-in pass with its own serverUpdated;
        // let that settle so that the signal awaited below can only come from the refresh.
        QTest::qWait(500);
        auto store = LocalSettings::instance();
        store->setValue(Keys::CachedServers, QStringList {QStringLiteral("stale")});
        m_service.setFault(FakeService::Fault::HttpError);
        QSignalSpy updated(client(), &NetworkManager::serverUpdated);
        client()->serverListRequest();
        QVERIFY(updated.wait(30000));
        QCOMPARE(updated.at(0).at(0).toInt(), int(NetworkManager::Success));
        QCOMPARE(updated.at(0).at(1).toString(), QString());
        chooseLogin(QStringLiteral("vpn-demo1"));
        QCOMPARE(client()->servers().size(), 7);
        QCOMPARE(store->value(Keys::CachedServers).toStringList().size(), 10);
    }

    void refreshTakesOnlyTheAccountData()
    {
        QCOMPARE(signIn().first, int(NetworkManager::Success));
        QSignalSpy auth(client(), &NetworkManager::auth);
        QSignalSpy updated(client(), &NetworkManager::serverUpdated);
        m_service.setConnectBody(document("<ver>" + b64(QStringLiteral("false")) + "</ver>"
                                          + element("auth", QStringLiteral("false"))
                                          + element("error", QStringLiteral("nosub"))
                                          + file(QStringLiteral("n"), QStringLiteral("pn"), QStringLiteral("0"))
                                          + vpn(QStringLiteral("Only"), QStringLiteral("n"))));
        chooseLogin(QStringLiteral("n"));
        client()->serverListRequest();
        QTRY_COMPARE_WITH_TIMEOUT(client()->servers().size(), 1, 30000);
        QTRY_VERIFY(!updated.isEmpty());
        QCOMPARE(updated.at(0).at(0).toInt(), int(NetworkManager::Success));
        QCOMPARE(auth.count(), 0);
        QCOMPARE(client()->servers().at(0).password, QStringLiteral("pn"));
        // The list is replaced, the other logins' certificates stay.
        QVERIFY(!client()->getCertifOvpnByUser(QStringLiteral("vpn-demo1")).isEmpty());
    }

    void timezone_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<FakeService::Fault>("fault");
        QTest::addColumn<QString>("zone");
        QTest::addColumn<bool>("success");
        const auto none = FakeService::Fault::None;
        QTest::newRow("named zone") << document(element("timezone", QStringLiteral("Europe/Berlin"))) << none
                                    << QStringLiteral("Europe/Berlin") << true;
        QTest::newRow("N/A is no zone") << document(element("timezone", QStringLiteral("N/A"))) << none << QString()
                                        << false;
        QTest::newRow("only the first timezone counts") << document(
            element("timezone", QStringLiteral("Asia/Tokyo")) + element("timezone", QStringLiteral("Europe/Paris")))
                                                        << none << QStringLiteral("Asia/Tokyo") << true;
        QTest::newRow("no timezone element")
            << document(element("other", QStringLiteral("x"))) << none << QString() << false;
        QTest::newRow("failed request") << QByteArray() << FakeService::Fault::HttpError << QString() << false;
    }
    void timezone()
    {
        QFETCH(QByteArray, body);
        QFETCH(FakeService::Fault, fault);
        QFETCH(QString, zone);
        QFETCH(bool, success);
        m_service.setConnectBody(body);
        m_service.setFault(fault);
        QSignalSpy got(client(), &NetworkManager::gotIpTimezone);
        client()->ipTimezoneRequest();
        QVERIFY(got.wait(30000));
        QCOMPARE(got.at(0).at(0).toString(), zone);
        QCOMPARE(got.at(0).at(1).toBool(), success);
    }

    void buyLink()
    {
        QSignalSpy got(client(), &NetworkManager::gotBuyLink);
        client()->getBuyLinkRequest(QStringLiteral("vpn-demo1"));
        QVERIFY(got.wait(30000));
        QCOMPARE(got.at(0).at(0).toString(), QStringLiteral("https://velmora.com/buy"));
    }

    void doubleHopLatencyIsAdded()
    {
        FakeFixture& f = m_service.fixture();
        f.servers.resize(3);
        f.servers[0].name = QStringLiteral("Paris - Oslo"); // double, with an extra latency
        f.servers[1].name = QStringLiteral("Rome - Bern"); // double, without one
        f.servers[2].name = QStringLiteral("Frankfurt"); // standard, with one that must not count
        f.servers[0].group = QStringLiteral("2");
        f.servers[1].group = QStringLiteral("2");
        f.servers[2].group = QStringLiteral("1");
        f.doublePings = {{QStringLiteral("Paris - Oslo"), 25}, {QStringLiteral("Frankfurt"), 7}};
        QCOMPARE(signIn().first, int(NetworkManager::Success));
        client()->pingDoubleServerRequest();
        chooseLogin(f.servers[0].user);
        auto pingOf = [this](int i) {
            return client()->servers().at(i).ping;
        };
        QTRY_VERIFY_WITH_TIMEOUT((client()->onPingServersFinished(), pingOf(0) == 25), 10000);
        QCOMPARE(pingOf(1), 0);
        QCOMPARE(pingOf(2), 0);
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
        QTest::newRow("server list") << QStringLiteral("list") << (head + QStringLiteral("act=wizardsetup")).split('|');
        QTest::newRow("update check") << QStringLiteral("update")
                                      << (head + QStringLiteral("act=wizardsetup|os=linux-debian")).split('|');
        QTest::newRow("time zone") << QStringLiteral("time") << (head + QStringLiteral("act=time")).split('|');
        QTest::newRow("purchase link") << QStringLiteral("buy")
                                       << (head + QStringLiteral("loginvpn=vpn-1|act=buy|os=linux-debian")).split('|');
    }
    void requestUrls()
    {
        QFETCH(QString, request);
        QFETCH(QStringList, items);
        NetworkManager* nm = client();
        QSignalSpy auth(nm, &NetworkManager::auth);
        nm->authRequest(QStringLiteral("me@x"), QStringLiteral("p&s+w d#="));
        QVERIFY(auth.wait(30000));
        m_service.reset();
        if (request == QLatin1String("list"))
            nm->serverListRequest();
        else if (request == QLatin1String("update"))
            nm->programUpdateRequest();
        else if (request == QLatin1String("time"))
            nm->ipTimezoneRequest();
        else if (request == QLatin1String("buy"))
            nm->getBuyLinkRequest(QStringLiteral("vpn-1"));
        else
            nm->authRequest(QStringLiteral("me@x"), QStringLiteral("p&s+w d#="));
        QTRY_COMPARE(m_service.requestCount(), 1);
        const QUrl url = m_service.requests().at(0);
        QCOMPARE(url.path(), QStringLiteral("/connect"));
        QStringList got;
        for (const auto& item : QUrlQuery(url).queryItems(QUrl::FullyDecoded))
            got << item.first + QLatin1Char('=') + item.second;
        QCOMPARE(got, items);
        QTest::qWait(100); // let the answer land before the next row replaces the client
    }

    void updateOffer_data()
    {
        QTest::addColumn<QString>("version");
        QTest::addColumn<bool>("offered");
        QTest::newRow("offer with version and link") << QStringLiteral("3.7.0") << true;
        QTest::newRow("no offer") << QString() << false;
    }
    void updateOffer()
    {
        QFETCH(QString, version);
        QFETCH(bool, offered);
        m_service.fixture().upgradeVersion = version;
        QCOMPARE(signIn().first, int(NetworkManager::Success));
        QSignalSpy update(client(), &NetworkManager::programUpdate);
        client()->programUpdateRequest();
        QVERIFY(update.wait(30000));
        QCOMPARE(update.at(0).at(0).toString(), version);
        QCOMPARE(update.at(0).at(1).toString(),
                 offered ? m_service.baseUrl() + QStringLiteral("/download/update.deb") : QString());
        QCOMPARE(update.at(0).at(2).toBool(), offered);
    }
};

TAVRIN_API_TEST_MAIN(TestNetworkManager)

#include "tst_NetworkManager.moc"
