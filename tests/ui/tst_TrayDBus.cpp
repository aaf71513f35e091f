// The tray as desktops with a StatusNotifierItem host see it: under a private X server and a
// private session bus, with a watcher double that plays the part of the desktop's panel.
#include <QAction>
#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QMenu>
#include <QMutex>
#include <QStandardPaths>
#include <QSystemTrayIcon>
#include <QThread>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "StatusNotifierWatcherDouble.h"
#include "SystemTray.h"

extern char** environ;

namespace {

const QString WatcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString WatcherPath = QStringLiteral("/StatusNotifierWatcher");

// A program of ours running for the length of the test, which reports one line through a pipe
// (Xvfb its display number, dbus-daemon its bus address).
class ReportingProcess
{
public:
    ~ReportingProcess()
    {
        if (m_pid > 0) {
            ::kill(m_pid, SIGTERM);
            ::waitpid(m_pid, nullptr, 0);
        }
    }

    // argv may contain "%fd", replaced by the pipe's write end.
    QString start(const QString& program, QStringList args, int timeoutMs = 10000)
    {
        int fds[2];
        if (::pipe(fds) != 0)
            return QString();
        for (QString& arg : args)
            arg.replace(QStringLiteral("%fd"), QString::number(fds[1]));
        QList<QByteArray> storage;
        storage << QFile::encodeName(program);
        for (const QString& arg : args)
            storage << arg.toLocal8Bit();
        std::vector<char*> argv;
        for (QByteArray& item : storage)
            argv.push_back(item.data());
        argv.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addclose(&actions, fds[0]);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        const int rc = posix_spawn(&m_pid, argv.front(), &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        ::close(fds[1]);
        if (rc != 0) {
            m_pid = -1;
            ::close(fds[0]);
            return QString();
        }

        QByteArray line;
        pollfd poller {fds[0], POLLIN, 0};
        while (!line.contains('\n') && ::poll(&poller, 1, timeoutMs) > 0) {
            char buffer[256];
            const ssize_t n = ::read(fds[0], buffer, sizeof buffer);
            if (n <= 0)
                break;
            line.append(buffer, int(n));
        }
        ::close(fds[0]);
        return QString::fromLocal8Bit(line).trimmed();
    }

private:
    pid_t m_pid = -1;
};

// Starts the X server and the session bus before the application object exists, and points
// the platform at them; anything missing becomes the reason to skip.
class DesktopSession
{
public:
    DesktopSession()
    {
        const QString xvfb = QStandardPaths::findExecutable(QStringLiteral("Xvfb"));
        const QString dbus = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
        if (xvfb.isEmpty()) {
            m_skipReason = QStringLiteral("Xvfb is not installed (package xvfb, see scripts/install-deps)");
            return;
        }
        if (dbus.isEmpty()) {
            m_skipReason = QStringLiteral("dbus-daemon is not installed (package dbus, see scripts/install-deps)");
            return;
        }
        const QString display = m_xserver.start(xvfb,
                                                {QStringLiteral("-displayfd"),
                                                 QStringLiteral("%fd"),
                                                 QStringLiteral("-nolisten"),
                                                 QStringLiteral("tcp"),
                                                 QStringLiteral("-screen"),
                                                 QStringLiteral("0"),
                                                 QStringLiteral("1024x768x24")});
        if (display.isEmpty()) {
            m_skipReason = QStringLiteral("Xvfb did not start");
            return;
        }
        m_busAddress = m_bus.start(
            dbus, {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address=%fd")});
        if (m_busAddress.isEmpty()) {
            m_skipReason = QStringLiteral("dbus-daemon --session did not start");
            return;
        }
        qputenv("DISPLAY", ":" + display.toLatin1());
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_busAddress.toLatin1());
        qputenv("QT_QPA_PLATFORM", "xcb");
        qunsetenv("XDG_CURRENT_DESKTOP");
        qunsetenv("QT_QPA_PLATFORMTHEME");
    }

    QString skipReason() const { return m_skipReason; }
    QString busAddress() const { return m_busAddress; }

private:
    ReportingProcess m_xserver;
    ReportingProcess m_bus;
    QString m_skipReason;
    QString m_busAddress;
};

DesktopSession* session = nullptr;

} // namespace

struct MenuEntry
{
    QVariantMap properties;
    QList<MenuEntry> children;

    QString label() const { return properties.value(QStringLiteral("label")).toString(); }
    bool isSeparator() const
    {
        return properties.value(QStringLiteral("type")).toString() == QLatin1String("separator");
    }
    bool isEnabled() const { return properties.value(QStringLiteral("enabled"), true).toBool(); }
};

static MenuEntry readLayout(const QDBusArgument& argument)
{
    MenuEntry entry;
    int id = 0;
    argument.beginStructure();
    argument >> id >> entry.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        entry.children.append(readLayout(qvariant_cast<QDBusArgument>(child.variant())));
    }
    argument.endArray();
    argument.endStructure();
    return entry;
}

Q_DECLARE_METATYPE(QList<bool>)

class TestTrayDBus : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (!session->skipReason().isEmpty())
            QSKIP(qPrintable(session->skipReason()));

        m_watcherConnection.reset(new QDBusConnection(
            QDBusConnection::connectToBus(session->busAddress(), QStringLiteral("tavrin-test-watcher"))));
        QVERIFY(m_watcherConnection->isConnected());
        m_watcherThread.start();
        m_watcher.moveToThread(&m_watcherThread);
        QVERIFY(m_watcherConnection->registerObject(
            WatcherPath, &m_watcher, QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties));
        QVERIFY(m_watcherConnection->registerService(WatcherService));

        m_tray.reset(new SystemTray);
        m_tray->init();
    }

    void cleanupTestCase()
    {
        m_tray.reset();
        m_watcherThread.quit();
        m_watcherThread.wait();
        if (m_watcherConnection)
            QDBusConnection::disconnectFromBus(QStringLiteral("tavrin-test-watcher"));
    }

    void registersItem()
    {
        QVERIFY(QSystemTrayIcon::isSystemTrayAvailable());
        QTRY_COMPARE(m_watcher.items().size(), 1);
        const QString service = m_watcher.items().first();
        QVERIFY2(service.startsWith(QLatin1String("org.kde.StatusNotifierItem-")), qPrintable(service));
        QVERIFY(QDBusConnection::sessionBus().interface()->isServiceRegistered(service));
    }

    void exportedMenu_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<QStringList>("labels");
        QTest::addColumn<QList<bool>>("enabled");
        // state: -1 right after init, then the status values of the tray.
        QTest::newRow("fresh tray offers to connect")
            << -1 << QStringList {"Tavrin", "Connect ", "Reconnect", "Disconnect", "Quit"}
            << QList<bool> {true, true, false, false, true};
        QTest::newRow("connecting offers nothing but show and quit")
            << 1 << QStringList {"Tavrin", "Connecting to Paris", "Reconnect", "Disconnect", "Quit"}
            << QList<bool> {true, false, false, false, true};
        QTest::newRow("connected offers reconnect and disconnect")
            << 2 << QStringList {"Tavrin", "Connected to Paris", "Reconnect", "Disconnect", "Quit"}
            << QList<bool> {true, false, true, true, true};
        QTest::newRow("disconnected offers to connect again")
            << 0 << QStringList {"Tavrin", "Connect Paris", "Reconnect", "Disconnect", "Quit"}
            << QList<bool> {true, true, false, false, true};
    }

    void exportedMenu()
    {
        QFETCH(int, state);
        QFETCH(QStringList, labels);
        QFETCH(QList<bool>, enabled);

        QTRY_COMPARE(m_watcher.items().size(), 1);
        const QString service = m_watcher.items().first();
        if (state >= 0)
            m_tray->setActiveServer(QStringLiteral("Paris"));
        if (state == 0)
            m_tray->setStatusDisconnected(false);
        else if (state == 1)
            m_tray->setStatusConnecting();
        else if (state == 2)
            m_tray->setStatusConnected(false);

        // Asked over the bus from a connection of its own, as the panel would.
        const QDBusObjectPath menuPath = qvariant_cast<QDBusObjectPath>(
            callWatcherSide(service,
                            QStringLiteral("/StatusNotifierItem"),
                            QStringLiteral("org.freedesktop.DBus.Properties"),
                            QStringLiteral("Get"),
                            {QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("Menu")})
                .value(0)
                .value<QDBusVariant>()
                .variant());
        QVERIFY(!menuPath.path().isEmpty());

        const QVariantList layoutReply = callWatcherSide(service,
                                                         menuPath.path(),
                                                         QStringLiteral("com.canonical.dbusmenu"),
                                                         QStringLiteral("GetLayout"),
                                                         {0, -1, QStringList()});
        QCOMPARE(layoutReply.size(), 2);
        const MenuEntry root = readLayout(qvariant_cast<QDBusArgument>(layoutReply.at(1)));

        QStringList shownLabels;
        QList<bool> shownEnabled;
        int separators = 0;
        for (const MenuEntry& child : root.children) {
            if (child.isSeparator()) {
                ++separators;
                continue;
            }
            shownLabels << child.label();
            shownEnabled << child.isEnabled();
        }
        QCOMPARE(separators, 2);
        QCOMPARE(shownLabels, labels);
        QCOMPARE(shownEnabled, enabled);
    }

private:
    QVariantList callWatcherSide(const QString& service,
                                 const QString& path,
                                 const QString& interface,
                                 const QString& method,
                                 const QVariantList& arguments)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
        message.setArguments(arguments);
        // Asynchronous, so that the tray in this thread can answer while we wait.
        QDBusPendingCall pending = m_watcherConnection->asyncCall(message);
        if (!QTest::qWaitFor([&] { return pending.isFinished(); }, 10000) || pending.isError()) {
            qWarning() << method << "failed:" << pending.error().message();
            return {};
        }
        return pending.reply().arguments();
    }

    QThread m_watcherThread;
    StatusNotifierWatcherDouble m_watcher;
    QScopedPointer<QDBusConnection> m_watcherConnection;
    QScopedPointer<SystemTray> m_tray;
};

int main(int argc, char* argv[])
{
    DesktopSession desktop;
    session = &desktop;
    QApplication app(argc, argv);
    TestTrayDBus test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_TrayDBus.moc"
