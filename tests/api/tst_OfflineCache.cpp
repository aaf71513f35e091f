#include <QtTest>

#include "FakeService.h"
#include "LocalSettings.h"
#include "NetworkManager.h"
#include "TestEnvironment.h"

using CacheMap = QMap<QString, QByteArray>;

// The account copy in the settings store: what survives a restart, and its encodings.
class TestOfflineCache : public QObject
{
    Q_OBJECT

    FakeService m_service;

    // A new settings store and a new client over the same file, as after a restart.
    static NetworkManager* restart()
    {
        NetworkManager::resetInstance();
        LocalSettings::resetInstance();
        return NetworkManager::instance();
    }

    static QStringList allServerLines(NetworkManager* nm)
    {
        QStringList lines;
        for (const QString& login : nm->cacheUsers()) {
            LocalSettings::instance()->setValue(Keys::VpnLogin, login);
            for (const ServerInfo& s : nm->servers())
                lines << s;
        }
        return lines;
    }

    static QStringList subscriptionLines(NetworkManager* nm)
    {
        QStringList lines;
        for (const Subscription& s : nm->subscriptions())
            lines << s.login() + '|' + s.password() + '|' + QString::number(s.expiresTime().toSecsSinceEpoch());
        return lines;
    }

private slots:
    void initTestCase() { useFakeService(m_service); }

    void init()
    {
        NetworkManager::resetInstance();
        LocalSettings::resetInstance();
        QFile::remove(LocalSettings::instance()->fileName());
        LocalSettings::resetInstance();
        // Keeps the store from resetting itself at the restart.
        LocalSettings::instance()->setValue(Keys::RememberUser, true);
    }

    void restartGivesTheSameAccountUntilCleared()
    {
        NetworkManager* nm = NetworkManager::instance();
        QCOMPARE(signInAndWait(nm), int(NetworkManager::Success));
        const QStringList users = nm->cacheUsers();
        const QStringList subscriptions = subscriptionLines(nm);
        const QStringList servers = allServerLines(nm);
        const QByteArray config = nm->getConfigOVPNbyServer(QString());
        const QByteArray cert = nm->getCertifOvpnByUser(QStringLiteral("vpn-demo2"));
        const QByteArray key = nm->getKeyOvpnByUser(QStringLiteral("vpn-demo1"));
        QCOMPARE(servers.size(), 10);
        QVERIFY(!cert.isEmpty() && !key.isEmpty() && !config.isEmpty());

        nm = restart();
        QCOMPARE(nm->cacheUsers(), users);
        QCOMPARE(subscriptionLines(nm), subscriptions);
        QCOMPARE(allServerLines(nm), servers);
        QCOMPARE(nm->getConfigOVPNbyServer(QString()), config);
        QCOMPARE(nm->getCertifOvpnByUser(QStringLiteral("vpn-demo2")), cert);
        QCOMPARE(nm->getKeyOvpnByUser(QStringLiteral("vpn-demo1")), key);

        nm->clearCache();
        nm = restart();
        QVERIFY(nm->cacheUsers().isEmpty());
        QVERIFY(nm->getConfigOVPNbyServer(QString()).isEmpty());
        QVERIFY(nm->getCertifOvpnByUser(QStringLiteral("vpn-demo2")).isEmpty());
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

TAVRIN_API_TEST_MAIN(TestOfflineCache)

#include "tst_OfflineCache.moc"
