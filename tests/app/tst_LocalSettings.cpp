#include <QtTest>

#include "LocalSettings.h"
#include "TestEnvironment.h"

namespace {
QString settingsPath()
{
    return qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/QOLV/Tavrin.conf");
}

// A restart: a new store over the same file.
QSharedPointer<LocalSettings> restart()
{
    LocalSettings::resetInstance();
    return LocalSettings::instance();
}
} // namespace

class TestLocalSettings : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        LocalSettings::resetInstance();
        QFile::remove(settingsPath());
    }

    void restartHonoursRememberUser_data()
    {
        QTest::addColumn<bool>("remember");
        // The first start has no file: the defaults it writes are what a remembered user keeps.
        QTest::newRow("remembered user keeps every key") << true;
        QTest::newRow("forgotten user gets the defaults back") << false;
    }
    void restartHonoursRememberUser()
    {
        QFETCH(bool, remember);
        auto store = LocalSettings::instance();
        store->setValue(Keys::Login, QStringLiteral("alice"));
        store->setValue(Keys::OvpnProtocol, QStringLiteral("stealth"));
        store->setValue(Keys::CachedConfig, QByteArray("client\r\n"));
        store->setValue(Keys::CachedKeys, QByteArray("keys"));
        store->setValue(Keys::CachedUsers, QStringList {"vpn1||p||2024-05-01T12:00:00"});
        store->setValue(Keys::Language, QStringLiteral("de"));
        store->setValue(Keys::RememberUser, remember);
        store.reset();

        store = restart();
        QCOMPARE(store->value(Keys::Login).toString(), remember ? QStringLiteral("alice") : QString());
        QCOMPARE(store->value(Keys::OvpnProtocol).toString(),
                 remember ? QStringLiteral("stealth") : QStringLiteral("tcp"));
        // The reset writes an empty text, which reads back as one empty line.
        QCOMPARE(store->value(Keys::CachedUsers).toStringList(),
                 remember ? QStringList {"vpn1||p||2024-05-01T12:00:00"} : QStringList {QString()});
        // These three outlive a reset.
        QCOMPARE(store->value(Keys::CachedConfig).toByteArray(), QByteArray("client\r\n"));
        QCOMPARE(store->value(Keys::CachedKeys).toByteArray(), QByteArray("keys"));
        QCOMPARE(store->value(Keys::Language).toString(), QStringLiteral("de"));
    }

    // Neither a file readable by others nor a damaged one may stay so: the first holds the
    // password in clear, the second would keep every later start from saving anything.
    void existingFileIsRepaired_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("readable by others") << QByteArray("[General]\nlogin=bob\nrememberUser=true\n");
        QTest::newRow("garbage") << QByteArray("[General\nlogin=\"abc\0\0\0\xff\xfe", 25);
    }
    void existingFileIsRepaired()
    {
        QFETCH(QByteArray, content);
        QVERIFY(QDir().mkpath(QFileInfo(settingsPath()).absolutePath()));
        QVERIFY(writeFile(settingsPath(), content));
        QVERIFY(QFile::setPermissions(settingsPath(), QFileDevice::Permissions(0x6444)));
        auto store = LocalSettings::instance();
        store->setValue(Keys::RememberUser, true);
        store->setValue(Keys::Passwd, QStringLiteral("secret"));
        QCOMPARE(QFileInfo(settingsPath()).permissions() & 0x0FFF, QFileDevice::ReadUser | QFileDevice::WriteUser);
        store.reset();
        QCOMPARE(restart()->value(Keys::Passwd).toString(), QStringLiteral("secret"));
    }

    // A process killed right after signing in must find its sign-in data at the next start,
    // so these keys reach the file at once.
    void signInKeysReachTheFileAtOnce_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("value");
        QTest::newRow("login") << Keys::Login << QVariant("alice");
        QTest::newRow("password") << Keys::Passwd << QVariant("secret");
        QTest::newRow("vpnLogin") << Keys::VpnLogin << QVariant("vpn1");
        QTest::newRow("rememberUser") << Keys::RememberUser << QVariant(true);
    }
    void signInKeysReachTheFileAtOnce()
    {
        QFETCH(QString, key);
        QFETCH(QVariant, value);
        LocalSettings::instance()->setValue(key, value);
        const QString line = QLatin1Char('\n') + key + QLatin1Char('=') + value.toString() + QLatin1Char('\n');
        QVERIFY2(readFile(settingsPath()).contains(line.toUtf8()), qPrintable(line));
    }
};

TAVRIN_API_TEST_MAIN(TestLocalSettings)
#include "tst_LocalSettings.moc"
