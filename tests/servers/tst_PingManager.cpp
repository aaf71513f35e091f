#include <QtTest>

#include "PingManager.h"
#include "PingWrapper.h"
#include "TestEnvironment.h"

#if defined(__SANITIZE_THREAD__)
#define TAVRIN_UNDER_TSAN 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TAVRIN_UNDER_TSAN 1
#endif
#endif

// Every job starts "ping" through PATH, which each test points at a directory it controls.
class TestPingManager : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    static QVector<ServerInfo> serversNamed(const QStringList& names)
    {
        QVector<ServerInfo> list;
        for (const QString& name : names) {
            ServerInfo s;
            s.name = name;
            s.ip = QStringLiteral("127.0.0.%1").arg(list.size() + 1);
            list.append(s);
        }
        return list;
    }

    // A stand-in "ping" on PATH: the shell commands given, after a first one that notes each start in runs.txt.
    void installStandIn(const QByteArray& note, const QByteArray& commands)
    {
        const QString script = m_dir.filePath(QStringLiteral("bin/ping"));
        const QByteArray runs = QFile::encodeName(m_dir.filePath(QStringLiteral("runs.txt")));
        QVERIFY(writeFile(script, "#!/bin/sh\n" + note + " >> '" + runs + "'\n" + commands + '\n'));
        QVERIFY(QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner));
    }

    int runs() const { return readFile(m_dir.filePath(QStringLiteral("runs.txt"))).count('\n'); }

    // Lets every job of the pass end and delivers their results; each result delivered hands the pool the next job.
    static void settle(PingManager& manager)
    {
        QThreadPool* pool = manager.findChild<QThreadPool*>();
        do {
            QVERIFY(pool->waitForDone(10000));
            QCoreApplication::sendPostedEvents();
        } while (pool->activeThreadCount() > 0);
    }

private slots:
    void initTestCase()
    {
#ifdef TAVRIN_UNDER_TSAN
        // Under ThreadSanitizer a child forked from a pool thread can hang in the sanitizer's exit handling.
        QSKIP("the ping jobs fork from worker threads, which ThreadSanitizer's runtime cannot survive");
#endif
        QVERIFY(QDir(m_dir.path()).mkpath(QStringLiteral("bin")));
    }
    void init()
    {
        QFile::remove(m_dir.filePath(QStringLiteral("runs.txt")));
        QFile::remove(m_dir.filePath(QStringLiteral("bin/ping")));
        // No ping anywhere on PATH unless a test installs the stand-in.
        qputenv("PATH", QFile::encodeName(m_dir.filePath(QStringLiteral("bin"))));
    }

    void finishRule_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<int>("signalsAfterPass");
        QTest::addColumn<int>("signalsAfterLateResult");
        QTest::addColumn<QString>("kept"); // one record per name, the last of a name, in name order
        QTest::newRow("distinct names wait for a surplus result")
            << QStringList({"b", "a", "c"}) << 0 << 1 << "a@127.0.0.2,b@127.0.0.1,c@127.0.0.3";
        QTest::newRow("counting restarts after the signal") << QStringList({"a", "a", "a"}) << 1 << 2 << "a@127.0.0.3";
    }
    // Whatever the names, the end of a pass is also reported once, and a result from outside it changes nothing.
    void finishRule()
    {
        QFETCH(QStringList, names);
        PingManager manager;
        QSignalSpy finished(&manager, &PingManager::pingServersFinished);
        QSignalSpy measured(&manager, &PingManager::passMeasured);
        manager.pingServers(serversNamed(names));
        settle(manager);
        QCOMPARE(measured.count(), 1);
        QTEST(int(finished.count()), "signalsAfterPass");
        QStringList kept;
        for (const ServerInfo& s : manager.servers())
            kept << s.name + '@' + s.ip;
        QTEST(kept.join(','), "kept");
        manager.onPingFinished(false, 0.0, QStringLiteral("late"), QString());
        QTEST(int(finished.count()), "signalsAfterLateResult");
        QCOMPARE(measured.count(), 1);
    }

    void resultFiling_data()
    {
        QTest::addColumn<bool>("success");
        QTest::addColumn<double>("timeMs");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QList<int>>("pings");
        QTest::newRow("success truncates the time") << true << 37.9 << "b" << QList<int>({0, 37});
        QTest::newRow("an answer within a millisecond is not 0") << true << 0.06 << "b" << QList<int>({0, 1});
        QTest::newRow("failure keeps the old latency") << false << 37.9 << "b" << QList<int>({0, 0});
        QTest::newRow("late result of an earlier pass changes nothing") << true << 37.9 << "old" << QList<int>({0, 0});
    }
    void resultFiling()
    {
        QFETCH(bool, success);
        QFETCH(double, timeMs);
        QFETCH(QString, name);
        PingManager manager;
        manager.pingServers(serversNamed({"old"}));
        manager.pingServers(serversNamed({"b", "a"}));
        settle(manager);
        manager.onPingFinished(success, timeMs, name, QString());
        QList<int> pings;
        for (const ServerInfo& s : manager.servers())
            pings.append(s.ping);
        QTEST(pings, "pings");
    }

    // One job against a stand-in that prints what iputils ping prints; it notes its locale and address in runs.txt.
    void measurement_data()
    {
        QTest::addColumn<QByteArray>("output"); // the stand-in's shell commands; empty: no ping on PATH
        QTest::addColumn<QString>("ip");
        QTest::addColumn<QString>("ran"); // what the stand-in noted: its locale and address
        QTest::addColumn<double>("timeMs"); // -1: a failed measurement
        const auto row = [](const char* name, const QByteArray& output, const char* ip, const char* ran, double ms) {
            QTest::newRow(name) << output << QString(ip) << QString(ran) << ms;
        };
        const QByteArray replies = "echo '64 bytes from 127.0.0.1: icmp_seq=1 ttl=64 time=10.5 ms'\n"
                                   "echo '64 bytes from 127.0.0.1: icmp_seq=2 ttl=64 time=20.5 ms'\n";
        const QByteArray summary = "echo '3 packets transmitted, 3 received, 0% packet loss, time 104ms'\n"
                                   "echo 'rtt min/avg/max/mdev = 10.500/23.456/40.000/7.100 ms'\n";
        row("the summary's mean", replies + summary, "127.0.0.1", "C 127.0.0.1", 23.456);
        row("answers without a summary, some lost", replies + "exit 1", "0:0::1", "C ::1", 15.5);
        row("all lost", "echo '3 packets transmitted, 0 received, 100% packet loss'\nexit 1", "::1", "C ::1", -1);
        row("garbage", "echo 'rtt min/avg/max/mdev = a/b/c ms'\necho 'bytes from x: time=ms'", "::1", "C ::1", -1);
        row("hangs past the time-out", replies + "/bin/sleep 10", "127.0.0.1", "C 127.0.0.1", -1);
        row("missing program", QByteArray(), "127.0.0.1", "", -1);
        row("an option instead of an address never runs", replies + summary, "-f", "", -1);
    }
    void measurement()
    {
        QFETCH(QByteArray, output);
        QFETCH(QString, ip);
        if (!output.isEmpty())
            installStandIn("for a; do last=$a; done\necho \"$LC_ALL $last\"", output);
        PingWrapper job(QStringLiteral("n"), ip, true, nullptr);
        job.setAutoDelete(false);
        QSignalSpy finished(&job, &PingWrapper::pingFinished);
        job.run();
        QFETCH(double, timeMs);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(finished.at(0).at(0).toBool(), timeMs >= 0);
        QCOMPARE(finished.at(0).at(1).toDouble(), qMax(timeMs, 0.0));
        QTEST(QString::fromUtf8(readFile(m_dir.filePath(QStringLiteral("runs.txt")))).trimmed(), "ran");
    }

    void newPassCountsLateResultsOfTheOldOne()
    {
        installStandIn("echo run", "exec /bin/sleep 2");
        PingManager manager;
        QSignalSpy finished(&manager, &PingManager::pingServersFinished);
        manager.pingServers(serversNamed({"a", "b", "c", "d", "e", "f"}));
        QTRY_COMPARE(runs(), 5);
        manager.pingServers(serversNamed({"x"}));
        settle(manager);
        // The queued sixth job was dropped; the five old results and the new one are all
        // counted against the single name of the new pass, which finishes it three times.
        QCOMPARE(runs(), 6);
        QCOMPARE(finished.count(), 3);
        QCOMPARE(manager.servers().size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestPingManager)
#include "tst_PingManager.moc"
