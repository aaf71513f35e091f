#include <QtTest>

#include "ReachabilityQt.h"

#include <thread>

class TestReachabilityQt : public QObject
{
    Q_OBJECT

private slots:
    void changeEventsBecomeSignals_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("ssid");
        QTest::addColumn<bool>("emitted");
        QTest::addColumn<bool>("joined");
        QTest::addColumn<bool>("firstKind");
        QTest::addColumn<QString>("name");
        QTest::newRow("10001 joined, first kind") << 10001 << "home" << true << true << true << "home";
        QTest::newRow("10002 joined, second kind") << 10002 << "cafe" << true << true << false << "cafe";
        QTest::newRow("10003 left drops the name") << 10003 << "cafe" << true << false << false << "";
        QTest::newRow("unknown code is ignored") << 10004 << "x" << false << false << false << "";
    }
    void changeEventsBecomeSignals()
    {
        QFETCH(int, code);
        QFETCH(QString, ssid);
        QFETCH(bool, emitted);
        ReachabilityQt watcher;
        QSignalSpy changes(&watcher, &ReachabilityQt::statusChangeWifi);
        QCOMPARE(g_reachabilityThis, &watcher);
        // Platform notifiers post from their own threads.
        std::thread notifier([&] { QCoreApplication::postEvent(g_reachabilityThis, new WifiChangeEvent(code, ssid)); });
        notifier.join();
        QCoreApplication::sendPostedEvents(&watcher);
        QCOMPARE(changes.size(), emitted ? 1 : 0);
        if (emitted) {
            QTEST(changes.at(0).at(0).toBool(), "joined");
            QTEST(changes.at(0).at(1).toBool(), "firstKind");
            QTEST(changes.at(0).at(2).toString(), "name");
        }
    }

    void otherEventTypesAreIgnored()
    {
        ReachabilityQt watcher;
        QSignalSpy changes(&watcher, &ReachabilityQt::statusChangeWifi);
        QCoreApplication::postEvent(&watcher, new QEvent(QEvent::Type(QEvent::User + 2)));
        QCoreApplication::sendPostedEvents(&watcher);
        QCOMPARE(changes.size(), 0);
        QCOMPARE(int(WifiChangeEvent::EventType), 1001);
    }
};

QTEST_GUILESS_MAIN(TestReachabilityQt)
#include "tst_ReachabilityQt.moc"
