#include <QtTest>

#include <QRandomGenerator>
#include <QSettings>
#include <QTemporaryDir>

#include <csignal>

#include "LocalSettings.h"

namespace {
QTemporaryDir* configHome = nullptr;

QString settingsPath()
{
    return configHome->path() + QStringLiteral("/QOLV/Tavrin.conf");
}

// Simulates a restart: a new store over the same file.
QSharedPointer<LocalSettings> restart()
{
    LocalSettings::resetInstance();
    return LocalSettings::instance();
}

void removeSettingsFile()
{
    LocalSettings::resetInstance();
    QFile::remove(settingsPath());
    QFile::remove(settingsPath() + QStringLiteral(".damaged"));
}
} // namespace

class TestLocalSettings : public QObject
{
    Q_OBJECT

private slots:
    void init() { removeSettingsFile(); }

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
        QVERIFY(store->value(Keys::CachedServers).toStringList().isEmpty()
                || store->value(Keys::CachedServers).toString().isEmpty());
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
        QTest::addColumn<bool>("lite");
        QTest::addColumn<int>("expected");
        QTest::addColumn<bool>("wasLite");
        QTest::newRow("clear on 7") << QVariant(7) << false << 6 << true;
        QTest::newRow("set on 6") << QVariant(6) << true << 7 << false;
        QTest::newRow("set on 0") << QVariant(0) << true << 1 << false;
        QTest::newRow("text reads as 0") << QVariant(QStringLiteral("abc")) << false << 0 << false;
        QTest::newRow("high bits kept") << QVariant(0x101) << false << 0x100 << true;
    }
    void liteBitKeepsOtherBits()
    {
        QFETCH(QVariant, stored);
        QFETCH(bool, lite);
        QFETCH(int, expected);
        QFETCH(bool, wasLite);
        auto store = LocalSettings::instance();
        store->setValue(Keys::Flag, stored);
        QCOMPARE(store->isLiteVersion(), wasLite);
        store->setIsLiteVersion(lite);
        QCOMPARE(store->value(Keys::Flag).toInt(), expected);
        QCOMPARE(store->isLiteVersion(), lite);
    }

    void fileIsOwnerOnly_data()
    {
        QTest::addColumn<bool>("preexisting");
        QTest::newRow("new file") << false;
        QTest::newRow("existing world-readable file") << true;
    }
    void fileIsOwnerOnly()
    {
        QFETCH(bool, preexisting);
        if (preexisting) {
            QDir().mkpath(QFileInfo(settingsPath()).absolutePath());
            QFile file(settingsPath());
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("[General]\nlogin=bob\nrememberUser=true\n");
            file.close();
            QVERIFY(file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup
                                        | QFileDevice::ReadOther));
        }
        auto store = LocalSettings::instance();
        store->setValue(Keys::Passwd, QStringLiteral("secret"));
        store->sync();
        QCOMPARE(QFileInfo(settingsPath()).permissions() & 0x00FF, QFileDevice::Permissions());
        QVERIFY(QFileInfo(settingsPath()).permissions() & QFileDevice::ReadOwner);
        if (preexisting)
            QCOMPARE(store->value(Keys::Login).toString(), QStringLiteral("bob"));
    }

    void garbageFileGivesWorkingStart_data()
    {
        QTest::addColumn<QByteArray>("content");
        QByteArray random(4096, Qt::Uninitialized);
        QRandomGenerator gen(42);
        for (char& c : random)
            c = char(gen.bounded(256));
        QTest::newRow("random bytes") << random;
        QTest::newRow("truncated section") << QByteArray("[General]\nlogin=al");
        QTest::newRow("unterminated quote and NULs") << QByteArray("[General\nlogin=\"abc\0\0\0\xff\xfe", 25);
        QTest::newRow("only brackets") << QByteArray("[[[[]]]]\n=\n==\n");
    }
    void garbageFileGivesWorkingStart()
    {
        QFETCH(QByteArray, content);
        QDir().mkpath(QFileInfo(settingsPath()).absolutePath());
        QFile file(settingsPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();

        auto store = LocalSettings::instance();
        QVERIFY(!store->value(Keys::RememberUser).toBool());
        QCOMPARE(store->value(Keys::OvpnProtocol).toString(), QStringLiteral("tcp"));
        store->setValue(Keys::Login, QStringLiteral("carol"));
        store.reset();
        QCOMPARE(restart()->value(Keys::Login).toString(), QString()); // rememberUser still false: reset
        auto again = restart();
        again->setValue(Keys::RememberUser, true);
        again->setValue(Keys::Login, QStringLiteral("carol"));
        again.reset();
        QCOMPARE(restart()->value(Keys::Login).toString(), QStringLiteral("carol"));
    }

    // A process killed right after signing in must find its sign-in data at the next start.
    void signInSurvivesSigkill_data()
    {
        QTest::addColumn<QString>("key");
        QTest::newRow("login") << Keys::Login;
        QTest::newRow("password") << Keys::Passwd;
        QTest::newRow("vpnLogin") << Keys::VpnLogin;
        QTest::newRow("rememberUser") << Keys::RememberUser;
    }
    void signInSurvivesSigkill()
    {
        QFETCH(QString, key);
        QProcess child;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), configHome->path());
        env.insert(QStringLiteral("TAVRIN_SETTINGS_CHILD_KEY"), key);
        child.setProcessEnvironment(env);
        child.start(QCoreApplication::applicationFilePath(), QStringList());
        QVERIFY(child.waitForFinished(10000));
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);

        QSettings settings(settingsPath(), QSettings::IniFormat);
        if (key == Keys::RememberUser)
            QCOMPARE(settings.value(key).toString(), QStringLiteral("true"));
        else
            QCOMPARE(settings.value(key).toString(), QStringLiteral("value-of-") + key);
    }
};

int main(int argc, char** argv)
{
    QTemporaryDir dir;
    configHome = &dir;
    const QByteArray childKey = qgetenv("TAVRIN_SETTINGS_CHILD_KEY");
    if (childKey.isEmpty())
        qputenv("XDG_CONFIG_HOME", dir.path().toLocal8Bit());
    QCoreApplication app(argc, argv);
    app.setOrganizationName(QStringLiteral("QOLV"));
    app.setApplicationName(QStringLiteral("Tavrin"));
    if (!childKey.isEmpty()) {
        auto store = LocalSettings::instance();
        const QString key = QString::fromUtf8(childKey);
        if (key == Keys::RememberUser)
            store->setValue(key, true);
        else
            store->setValue(key, QStringLiteral("value-of-") + key);
        ::raise(SIGKILL);
    }
    TestLocalSettings test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_LocalSettings.moc"
