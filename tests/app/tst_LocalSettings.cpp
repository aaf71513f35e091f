#include <QtTest>

#include <QTemporaryDir>

#include "LocalSettings.h"

namespace {
QTemporaryDir configHome;

QString settingsPath()
{
    return configHome.path() + QStringLiteral("/QOLV/Tavrin.conf");
}

// Simulates a restart: a new store over the same file.
QSharedPointer<LocalSettings> restart()
{
    LocalSettings::resetInstance();
    return LocalSettings::instance();
}

void writeSettingsFile(const QByteArray& content)
{
    QDir().mkpath(QFileInfo(settingsPath()).absolutePath());
    QFile file(settingsPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}
} // namespace

class TestLocalSettings : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("XDG_CONFIG_HOME", configHome.path().toLocal8Bit());
        QCoreApplication::setOrganizationName(QStringLiteral("QOLV"));
        QCoreApplication::setApplicationName(QStringLiteral("Tavrin"));
    }
    void init()
    {
        LocalSettings::resetInstance();
        QFile::remove(settingsPath());
    }

    void firstStartWritesDefaults()
    {
        auto store = LocalSettings::instance();
        QCOMPARE(store->fileName(), settingsPath());
        QCOMPARE(store->value(Keys::IPv6LeakProtect).toBool(), true);
        QCOMPARE(store->value(Keys::OvpnProtocol).toString(), QStringLiteral("tcp"));
        QCOMPARE(store->value(Keys::RememberUser).toBool(), false);
        QVERIFY(store->isLiteVersion());
        QVERIFY(!store->value(Keys::Language).isValid());
        QVERIFY(!store->value(Keys::CachedConfig).isValid());
        const QVariant never = store->value(QStringLiteral("neverWritten"));
        QVERIFY(!never.isValid());
        QVERIFY(never.toString().isEmpty());
        QVERIFY(!never.toBool());
    }

    void restartHonoursRememberUser_data()
    {
        QTest::addColumn<bool>("remember");
        QTest::newRow("remembered user keeps every key") << true;
        QTest::newRow("forgotten user gets the defaults back") << false;
    }
    void restartHonoursRememberUser()
    {
        QFETCH(bool, remember);
        auto store = LocalSettings::instance();
        store->setValue(Keys::Login, QStringLiteral("alice"));
        store->setValue(Keys::OvpnProtocol, QStringLiteral("stealth"));
        store->setValue(Keys::KillConnect, true);
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
        QCOMPARE(store->value(Keys::KillConnect).toString(),
                 remember ? QStringLiteral("true") : QStringLiteral("false"));
        // The reset writes an empty text, which reads back as one empty line.
        QCOMPARE(store->value(Keys::CachedUsers).toStringList(),
                 remember ? QStringList {"vpn1||p||2024-05-01T12:00:00"} : QStringList {QString()});
        // These three outlive a reset.
        QCOMPARE(store->value(Keys::CachedConfig).toByteArray(), QByteArray("client\r\n"));
        QCOMPARE(store->value(Keys::CachedKeys).toByteArray(), QByteArray("keys"));
        QCOMPARE(store->value(Keys::Language).toString(), QStringLiteral("de"));
    }

    void liteBitKeepsOtherBits_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<bool>("wasLite");
        QTest::addColumn<bool>("lite");
        QTest::addColumn<int>("expected");
        QTest::newRow("clear on 7") << QVariant(7) << true << false << 6;
        QTest::newRow("set on 6") << QVariant(6) << false << true << 7;
        QTest::newRow("text reads as 0") << QVariant("abc") << false << false << 0;
        QTest::newRow("high bits kept") << QVariant(0x101) << true << false << 0x100;
    }
    void liteBitKeepsOtherBits()
    {
        QFETCH(QVariant, stored);
        QFETCH(bool, lite);
        auto store = LocalSettings::instance();
        store->setValue(Keys::Flag, stored);
        QTEST(store->isLiteVersion(), "wasLite");
        store->setIsLiteVersion(lite);
        QTEST(store->value(Keys::Flag).toInt(), "expected");
        QCOMPARE(store->isLiteVersion(), lite);
    }

    // The file holds the password in clear; one left readable by others must not stay so.
    void existingFileBecomesOwnerOnly()
    {
        writeSettingsFile("[General]\nlogin=bob\nrememberUser=true\n");
        QVERIFY(QFile::setPermissions(settingsPath(), QFileDevice::Permissions(0x6444)));
        auto store = LocalSettings::instance();
        store->setValue(Keys::Passwd, QStringLiteral("secret"));
        QCOMPARE(QFileInfo(settingsPath()).permissions() & 0x0FFF, QFileDevice::ReadUser | QFileDevice::WriteUser);
        QCOMPARE(store->value(Keys::Login).toString(), QStringLiteral("bob"));
    }

    // A damaged file must not keep every later start from saving anything.
    void garbageFileGivesWorkingStart()
    {
        writeSettingsFile(QByteArray("[General\nlogin=\"abc\0\0\0\xff\xfe", 25));
        auto store = LocalSettings::instance();
        QCOMPARE(store->value(Keys::OvpnProtocol).toString(), QStringLiteral("tcp"));
        store->setValue(Keys::RememberUser, true);
        store->setValue(Keys::Login, QStringLiteral("carol"));
        store.reset();
        QCOMPARE(restart()->value(Keys::Login).toString(), QStringLiteral("carol"));
    }

    // A process killed right after signing in must find its sign-in data at the next start,
    // so these keys reach the file at once.
    void signInKeysReachTheFileAtOnce_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("login") << Keys::Login << QVariant("alice") << QByteArray("login=alice");
        QTest::newRow("password") << Keys::Passwd << QVariant("secret") << QByteArray("password=secret");
        QTest::newRow("vpnLogin") << Keys::VpnLogin << QVariant("vpn1") << QByteArray("vpnLogin=vpn1");
        QTest::newRow("rememberUser") << Keys::RememberUser << QVariant(true) << QByteArray("rememberUser=true");
    }
    void signInKeysReachTheFileAtOnce()
    {
        QFETCH(QString, key);
        QFETCH(QVariant, value);
        QFETCH(QByteArray, line);
        auto store = LocalSettings::instance();
        store->setValue(key, value);
        QFile file(settingsPath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY2(file.readAll().contains("\n" + line + "\n"), line.constData());
    }
};

QTEST_GUILESS_MAIN(TestLocalSettings)
#include "tst_LocalSettings.moc"
