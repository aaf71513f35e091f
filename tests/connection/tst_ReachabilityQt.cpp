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
        QTest::addColumn<QVariantList>("signal"); // joined, first kind, name; empty: no signal
        QTest::newRow("10001 joined, first kind") << 10001 << QVariantList {true, true, "home"};
        QTest::newRow("10002 joined, second kind") << 10002 << QVariantList {true, false, "home"};
        QTest::newRow("10003 left drops the name") << 10003 << QVariantList {false, false, ""};
        QTest::newRow("unknown code is ignored") << 10004 << QVariantList();
        QTest::newRow("other event types are ignored") << 0 << QVariantList();
    }
    void changeEventsBecomeSignals()
    {
        QFETCH(int, code);
        ReachabilityQt watcher;
        QSignalSpy changes(&watcher, &ReachabilityQt::statusChangeWifi);
        // Platform notifiers post from their own threads.
        std::thread notifier([&] {
            QEvent* event
                = code ? new WifiChangeEvent(code, QStringLiteral("home")) : new QEvent(QEvent::Type(QEvent::User + 2));
            QCoreApplication::postEvent(g_reachabilityThis, event);
        });
        notifier.join();
        QCoreApplication::sendPostedEvents(&watcher);
        QTEST(QVariantList(changes.value(0)), "signal");
        QVERIFY(changes.size() <= 1);
    }
};

QTEST_GUILESS_MAIN(TestReachabilityQt)
#include "tst_ReachabilityQt.moc"
