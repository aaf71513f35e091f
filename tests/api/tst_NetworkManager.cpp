#include <QDomDocument>
#include <QtTest>

#include <QStandardPaths>

#include "AnswerReader.h"
#include "FakeService.h"
#include "GetManager.h"
#include "LocalSettings.h"
#include "NetworkManager.h"
#include "ServiceAddresses.h"
#include "TestEnvironment.h"

Q_DECLARE_METATYPE(FakeCertificates::Kind)
Q_DECLARE_METATYPE(FakeService::Fault)

// Small builders for hand-made service answers (Base64 payloads as the service sends them), and two readings of an
// answer's children: by the streaming reader and by a DOM tree.
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

const char* const attributeNames[] = {"name", "user", "type", "a:b"};

QString describe(const AnswerReader& answer)
{
    QString line = answer.name() + QLatin1Char('|');
    for (const char* name : attributeNames) {
        const QStringRef value = answer.attribute(QLatin1String(name));
        if (!value.isNull())
            line += QLatin1String(name) + QLatin1Char('=') + value + QLatin1Char(' ');
    }
    line += QLatin1Char('|') + answer.text() + QLatin1Char('|');
    for (const AnswerReader::Part& part : answer.parts())
        line += part.name + QLatin1Char('=') + part.text + QLatin1Char(' ');
    return line;
}

QStringList treeWalk(const QByteArray& body)
{
    QDomDocument doc(QStringLiteral("request"));
    doc.setContent(body);
    QStringList children;
    for (QDomNode node = doc.documentElement().firstChild(); !node.isNull(); node = node.nextSibling()) {
        const QDomElement e = node.toElement();
        if (e.isNull())
            continue;
        QString line = e.tagName() + QLatin1Char('|');
        for (const char* name : attributeNames) {
            if (e.hasAttribute(QLatin1String(name)))
                line += QLatin1String(name) + QLatin1Char('=') + e.attribute(QLatin1String(name)) + QLatin1Char(' ');
        }
        line += QLatin1Char('|') + e.text() + QLatin1Char('|');
        for (QDomElement part = e.firstChildElement(); !part.isNull(); part = part.nextSiblingElement())
            line += part.tagName() + QLatin1Char('=') + part.text() + QLatin1Char(' ');
        children << line;
    }
    return children;
}

// Whole, or in pieces of the given size as from the network, each piece read as it comes.
QStringList streamWalk(const QByteArray& body, int pieceSize = 0)
{
    QScopedPointer<AnswerReader> answer(pieceSize == 0 ? new AnswerReader(body) : new AnswerReader);
    QStringList children;
    for (int at = 0; pieceSize != 0 && at <= body.size(); at += pieceSize) {
        answer->addData(body.mid(at, pieceSize));
        if (at + pieceSize > body.size())
            answer->endOfData();
        while (answer->next())
            children << describe(*answer);
    }
    while (answer->next())
        children << describe(*answer);
    return children;
}

} // namespace

using CacheMap = QMap<QString, QByteArray>;

// The service client, its request channel and its reader of answers, against the fake service over real HTTPS on
// loopback; and its account copy in the settings store: what survives a restart, and its encodings.
class TestNetworkManager : public QObject
{
    Q_OBJECT

    FakeService m_service;

    NetworkManager* client() { return NetworkManager::instance(); }
    QUrl timeUrl() const { return QUrl(m_service.baseUrl() + QStringLiteral("/connect?act=time")); }

    // A new settings store and a new client over the same file, as after a restart.
    static void restart()
    {
        NetworkManager::resetInstance();
        LocalSettings::resetInstance();
    }

    QStringList allServerLines()
    {
        QStringList lines;
        for (const QString& login : client()->cacheUsers()) {
            chooseLogin(login);
            for (const ServerInfo& s : client()->servers())
                lines << s;
        }
        return lines;
    }

    QStringList subscriptionLines()
    {
        QStringList lines;
        for (const Subscription& s : client()->subscriptions())
            lines << s.login() + '|' + s.password() + '|' + QString::number(s.expiresTime().toSecsSinceEpoch());
        return lines;
    }

    int signIn(const QString& user = QStringLiteral("demo"), const QString& password = QStringLiteral("demo"))
    {
        return signInAndWait(client(), user, password);
    }

    void chooseLogin(const QString& login) { LocalSettings::instance()->setValue(Keys::VpnLogin, login); }

private slots:
    void initTestCase() { useFakeService(m_service); }

    void init()
    {
        restart();
        QFile::remove(LocalSettings::instance()->fileName());
        LocalSettings::resetInstance();
        m_service.reset();
        m_service.setFixture(FakeFixture::demo());
    }

    void sameChildrenAsTheTree_data()
    {
        QTest::addColumn<QByteArray>("body");
        // Children at the end that the tree kept although a parse error cut them short.
        QTest::addColumn<int>("cutShort");
        QTest::newRow("any root name, prolog and doctype")
            << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?><!-- service --><?pi x?>"
                          "<!DOCTYPE answer SYSTEM \"answer.dtd\"><answer><ver type=\"lite\">dHJ1ZQ==</ver></answer>")
            << 0;
        QTest::newRow("entities in text and attributes")
            << QByteArray("<r><cert user=\"a&amp;b&#65;\">x&lt;y&#x41;&gt;&quot;&apos;</cert></r>") << 0;
        QTest::newRow("entities declared in the doctype") << QByteArray(
            "<!DOCTYPE r [<!ENTITY t \"dHJ1ZQ==\"><!ENTITY v \"<vpn name='e'/>\">]><r><auth>&t;</auth>&v;</r>")
                                                          << 0;
        QTest::newRow("CDATA is text") << QByteArray("<r><config><![CDATA[abc<def>]]>ghi<![CDATA[ ]]></config></r>")
                                       << 0;
        QTest::newRow("unknown children with nested elements are passed whole")
            << QByteArray("<r><unknown><vpn name=\"no\"/><deeper><x>t</x></deeper></unknown><vpn name=\"yes\"/></r>")
            << 0;
        QTest::newRow("update offer parts") << QByteArray(
            "<r><upgrade>x<ver>MS4w</ver><!--c--><link>bA==<y>QQ==</y></link><ver>Mi4w</ver></upgrade></r>")
                                            << 0;
        QTest::newRow("multi-byte characters, blanks around and inside text") << QByteArray(
            "<r><cert user=\"\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80\">  ab  \n cd  </cert><key>\n  </key></r>")
                                                                              << 0;
        QTest::newRow("Latin-1 declared")
            << QByteArray("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r><cert user=\"\xe9\">\xe9</cert></r>") << 0;
        QTest::newRow("plain children, then an entity and a character outside ASCII")
            << QByteArray("<r><vpn name='a>b' ip = \"c\" /><config>YWJj</config><cert user=\"x\">a&amp;b</cert>"
                          "<vpn name=\"\xc3\xa9\"/></r>")
            << 0;
        QTest::newRow("truncated in a text") << QByteArray("<r><config>YWJj</config><cert>ZGVm") << 1;
        QTest::newRow("mismatched end tag") << QByteArray("<r><key>a</key><cert>b</key><vpn/></r>") << 1;
    }
    void sameChildrenAsTheTree()
    {
        QFETCH(QByteArray, body);
        QFETCH(int, cutShort);
        QStringList expected = treeWalk(body);
        // A child that an error cuts short is dropped, together with everything after it.
        expected.erase(expected.end() - cutShort, expected.end());
        QCOMPARE(streamWalk(body), expected);
        // As it arrives from the network, cut anywhere: inside a name, an entity, a character, a CDATA marker.
        for (const int pieceSize : {1, 3, 7})
            QCOMPARE(streamWalk(body, pieceSize), expected);
    }

    // A refused certificate ends the handshake, so the request never reaches the service. The trusted authority of
    // TAVRIN_CA_FILE is met through every other test.
    void refusesAnUnverifiedService_data()
    {
        QTest::addColumn<FakeCertificates::Kind>("certificate");
        QTest::addColumn<int>("error"); // QSslError::SslError
        QTest::newRow("unknown authority")
            << FakeCertificates::Kind::UnknownAuthority << int(QSslError::UnableToGetLocalIssuerCertificate);
        QTest::newRow("another host's certificate")
            << FakeCertificates::Kind::OtherHost << int(QSslError::HostNameMismatch);
        QTest::newRow("expired certificate") << FakeCertificates::Kind::Expired << int(QSslError::CertificateExpired);
    }
    void refusesAnUnverifiedService()
    {
        QFETCH(FakeCertificates::Kind, certificate);
        QFETCH(int, error);
        m_service.setCertificate(certificate);
        GetManager channel(10000, nullptr);
        QSignalSpy finished(&channel, &GetManager::finished);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^The certificate of 127.0.0.1 ")));
        channel.getAsync(timeUrl(), 3);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QVERIFY(!channel.success);
        QVERIFY(channel.unverified);
        QCOMPARE(m_service.requestCount(), 0);
        // The log and the caller get the TLS error itself, not "SSL handshake failed".
        const QString expected = QSslError(QSslError::SslError(error)).errorString();
        QVERIFY2(channel.errorString.contains(expected), qPrintable(channel.errorString));
    }

    // Six attempts at most, whether the service fails or says nothing.
    void resendsFailedAttempts_data()
    {
        QTest::addColumn<FakeService::Fault>("fault");
        QTest::addColumn<int>("failures");
        QTest::addColumn<int>("timeoutMs");
        QTest::addColumn<bool>("success");
        const auto error = FakeService::Fault::HttpError;
        QTest::newRow("five failures then success on the last re-send") << error << 5 << 10000 << true;
        QTest::newRow("a seventh attempt is never made") << error << 100 << 10000 << false;
        QTest::newRow("a silent service is given up on alike") << FakeService::Fault::Hang << 100 << 200 << false;
    }
    void resendsFailedAttempts()
    {
        QFETCH(FakeService::Fault, fault);
        QFETCH(int, failures);
        QFETCH(int, timeoutMs);
        QFETCH(bool, success);
        m_service.failNext(failures, fault);
        GetManager channel(timeoutMs, nullptr);
        QSignalSpy finished(&channel, &GetManager::finished);
        channel.getAsync(timeUrl(), 3);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QCOMPARE(finished.at(0).at(0).toInt(), 0);
        QTRY_COMPARE(m_service.requestCount(), 6);
        QCOMPARE(channel.success, success);
        QCOMPARE(channel.errorString.isEmpty(), success);
        QTest::qWait(300);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(m_service.requestCount(), 6);
    }

    // The refusals the sign-in page shows are driven through the main window's tests. The credentials reach the service
    // as typed, characters of a query's syntax and all.
    void signInOutcomes_data()
    {
        QTest::addColumn<QString>("error");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("password");
        QTest::addColumn<int>("code");
        QTest::newRow("other service error")
            << "account blocked" << QByteArray() << "demo" << int(NetworkManager::NetworkFailure);
        QTest::newRow("invalid Base64 in auth")
            << QString() << document("<ver>" + b64(QStringLiteral("true")) + "</ver><auth>!!%%</auth>") << "demo"
            << int(NetworkManager::WrongLogin);
        QTest::newRow("query syntax in the password")
            << QString() << QByteArray() << "p&s+w d#=@" << int(NetworkManager::Success);
    }
    void signInOutcomes()
    {
        QFETCH(QString, error);
        QFETCH(QByteArray, body);
        QFETCH(QString, password);
        m_service.fixture().error = error;
        m_service.fixture().password = password;
        m_service.setConnectBody(body);
        QSignalSpy auth(client(), &NetworkManager::auth);
        QTEST(signIn(QStringLiteral("demo"), password), "code");
        QCOMPARE(auth.at(0).at(1).toString(), error);
    }

    void serverAttributes_data()
    {
        QTest::addColumn<QByteArray>("attributes");
        QTest::addColumn<QStringList>("tcpPorts");
        QTest::addColumn<QStringList>("udpPorts");
        QTest::addColumn<int>("sslPort");
        const QStringList absent {QString()};
        auto attr = [](const char* name, const char* value) {
            return QByteArray(name) + "=\"" + b64(QString::fromLatin1(value)) + "\" ";
        };
        QTest::newRow("0 first empties the list")
            << attr("tcp", "0,443") + attr("udp", "1194") << QStringList() << QStringList {"1194"} << 0;
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

    // A request sent while the answer to the last one is still arriving: the first to finish is read whole.
    void overlappingRequests_data()
    {
        QTest::addColumn<bool>("signInFirst");
        QTest::newRow("a list asked for during the sign-in answer") << true;
        QTest::newRow("a list asked for during another list") << false;
    }
    void overlappingRequests()
    {
        QFETCH(bool, signInFirst);
        QByteArray children = element("ver", QStringLiteral("true")) + element("auth", QStringLiteral("true"))
            + file(QStringLiteral("big"), QStringLiteral("p"), QStringLiteral("3000000000"));
        for (int i = 0; i < 3000; ++i)
            children += vpn(QStringLiteral("S%1").arg(i), QStringLiteral("big"));
        m_service.setConnectBody(document(children));
        m_service.setBodyRate(200000);
        QSignalSpy auth(client(), &NetworkManager::auth);
        QSignalSpy listed(client(), &NetworkManager::serverUpdated);
        if (signInFirst)
            client()->authRequest(QStringLiteral("demo"), QStringLiteral("demo"));
        else
            client()->serverListRequest();
        QTest::qWait(400);
        client()->serverListRequest();
        QTRY_COMPARE_WITH_TIMEOUT(auth.count() + listed.count(), 1, 20000);
        if (signInFirst)
            QCOMPARE(auth.at(0).at(0).toInt(), int(NetworkManager::Success));
        chooseLogin(QStringLiteral("big"));
        QCOMPARE(client()->servers().size(), 3000);
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

    // "N/A" is no zone; what a real one sets is in the connection controller's sequences.
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
        // Every first hop answers in 10 ms; then without an answer the extra latency must not make it look measured.
        const QString ping = QStandardPaths::findExecutable(QStringLiteral("ping"));
        for (const QByteArray& script :
             {QByteArray("echo 'rtt min/avg/max/mdev = 10.0/10.0/10.0/0.0 ms'"), QByteArray("exit 1")}) {
            QFile::remove(ping);
            QVERIFY(writeFile(ping, "#!/bin/sh\n" + script + "\n"));
            QVERIFY(QFile::setPermissions(ping, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
            const bool answers = script.startsWith("echo");
            QCOMPARE(signIn(), int(NetworkManager::Success));
            client()->pingDoubleServerRequest();
            chooseLogin(f.servers[0].user);
            QTRY_VERIFY_WITH_TIMEOUT(
                (client()->onPingServersFinished(), client()->servers().at(0).ping == (answers ? 35 : 0)), 10000);
            QCOMPARE(client()->servers().at(1).ping, answers ? 10 : 0);
            QCOMPARE(client()->servers().at(2).ping, answers ? 10 : 0);
        }
        QFile::remove(ping);
        QFile::link(QStringLiteral("/bin/true"), ping);
    }

    // While the kill switch is on, a request to a host pinned at start goes to its address, the name kept for the
    // Host header and the certificate; any other host is left to a lookup, never started here. An address found
    // is kept for the next run, which pins it without a lookup (one its rules could drop).
    void requestsBypassLookupsOnlyWhenBlocked()
    {
        LocalSettings::instance()->setValue(Keys::ServiceAddresses, "bad=x;remembered.invalid=192.0.2.7");
        const QByteArray site = "https://localhost:" + QByteArray::number(m_service.serverPort());
        qputenv("TAVRIN_SITE_URL", site);
        const QStringList pinned = ServiceAddresses::pinned();
        qputenv("TAVRIN_SITE_URL", "https://remembered.invalid");
        QVERIFY(ServiceAddresses::pinned().contains(QStringLiteral("192.0.2.7")));
        qputenv("TAVRIN_SITE_URL", "https://127.0.0.1:1");
        // IPv4 where the host has it: the IPv6 leak protection would drop the other.
        QCOMPARE(pinned.value(pinned.size() - 1), QStringLiteral("127.0.0.1"));
        QTRY_COMPARE(LocalSettings::instance()->value(Keys::ServiceAddresses).toString(),
                     QStringLiteral("localhost=127.0.0.1;remembered.invalid=192.0.2.7"));
        const QUrl url(QString::fromLatin1(site + "/connect?act=list"));
        for (const bool blocked : {false, true}) {
            ServiceAddresses::setBypassingLookups(blocked);
            const QNetworkRequest request = ServiceAddresses::request(url);
            QCOMPARE(request.url().host(), blocked ? QStringLiteral("127.0.0.1") : QStringLiteral("localhost"));
            QCOMPARE(request.url().query(), url.query());
            QCOMPARE(request.rawHeader("Host"), blocked ? url.authority().toLatin1() : QByteArray());
            QCOMPARE(request.peerVerifyName(), blocked ? QStringLiteral("localhost") : QString());
            QCOMPARE(ServiceAddresses::request(QUrl(QStringLiteral("https://cdn.invalid/a.deb"))).url().host(),
                     QStringLiteral("cdn.invalid"));
        }
        ServiceAddresses::setBypassingLookups(false);
    }

    // An address is kept for the next runs only once it has shown the host's certificate, so that a resolver's
    // lie does not outlive the network that told it.
    void keepsOnlyVerifiedAddresses_data()
    {
        QTest::addColumn<FakeCertificates::Kind>("certificate");
        QTest::addColumn<QString>("kept");
        QTest::newRow("another host's certificate") << FakeCertificates::Kind::OtherHost << "";
        QTest::newRow("nothing listening") << FakeCertificates::Kind::Trusted << "";
        QTest::newRow("the host's certificate") << FakeCertificates::Kind::Trusted << "localhost=127.0.0.1";
    }
    void keepsOnlyVerifiedAddresses()
    {
        QFETCH(FakeCertificates::Kind, certificate);
        QFETCH(QString, kept);
        m_service.setCertificate(certificate);
        LocalSettings::instance()->setValue(Keys::ServiceAddresses, QString());
        const bool listening = QByteArray(QTest::currentDataTag()) != "nothing listening";
        ServiceAddresses::keepIfVerified(
            QStringLiteral("localhost"), listening ? m_service.serverPort() : 1, QStringLiteral("127.0.0.1"));
        if (kept.isEmpty())
            QTest::qWait(1000);
        QTRY_COMPARE(LocalSettings::instance()->value(Keys::ServiceAddresses).toString(), kept);
    }

    void restartGivesTheSameAccountUntilCleared()
    {
        // Keeps the store from resetting itself at the restart.
        LocalSettings::instance()->setValue(Keys::RememberUser, true);
        QCOMPARE(signIn(), int(NetworkManager::Success));
        const QStringList subscriptions = subscriptionLines();
        const QStringList servers = allServerLines();
        const QByteArray config = client()->getConfigOVPNbyServer(QString());
        const QByteArray cert = client()->getCertifOvpnByUser(QStringLiteral("vpn-demo2"));
        const QByteArray key = client()->getKeyOvpnByUser(QStringLiteral("vpn-demo1"));
        QCOMPARE(servers.size(), 10);
        QVERIFY(!cert.isEmpty() && !key.isEmpty() && !config.isEmpty());

        restart();
        QCOMPARE(subscriptionLines(), subscriptions);
        QCOMPARE(allServerLines(), servers);
        QCOMPARE(client()->getConfigOVPNbyServer(QString()), config);
        QCOMPARE(client()->getCertifOvpnByUser(QStringLiteral("vpn-demo2")), cert);
        QCOMPARE(client()->getKeyOvpnByUser(QStringLiteral("vpn-demo1")), key);

        client()->clearCache();
        restart();
        QVERIFY(client()->cacheUsers().isEmpty());
        QVERIFY(client()->getConfigOVPNbyServer(QString()).isEmpty());
        QVERIFY(client()->getCertifOvpnByUser(QStringLiteral("vpn-demo2")).isEmpty());
        NetworkManager::resetInstance();
        // An empty list, unlike the reset text: not even a default record is written back.
        QVERIFY(LocalSettings::instance()->value(Keys::CachedServers).toStringList().isEmpty());
    }

    // Damaged bytes keep what was read before the damage.
    void mapEncoding_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<CacheMap>("map");
        QTest::addColumn<bool>("written");
        const QByteArray two = QByteArray::fromHex("0000000200000002006200000001320000000200610000000131");
        QTest::newRow("entries go from the last key to the first")
            << two << CacheMap {{QStringLiteral("a"), QByteArray("1")}, {QStringLiteral("b"), QByteArray("2")}} << true;
        QTest::newRow("cut in the last value")
            << two.left(two.size() - 1) << CacheMap {{QStringLiteral("b"), QByteArray("2")}} << false;
        QTest::newRow("count larger than the entries") << QByteArray::fromHex("7fffffff00000002006100000000")
                                                       << CacheMap {{QStringLiteral("a"), QByteArray()}} << false;
    }
    void mapEncoding()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(CacheMap, map);
        QCOMPARE(NetworkManager::cacheArrayToMap(bytes), map);
        QFETCH(bool, written);
        if (written)
            QCOMPARE(NetworkManager::cacheMapToArray(map), bytes);
    }
};

TAVRIN_API_TEST_MAIN(TestNetworkManager)

#include "tst_NetworkManager.moc"
