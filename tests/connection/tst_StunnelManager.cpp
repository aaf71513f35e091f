#include <QtTest>

#include "StunnelManager.h"
#include "TestEnvironment.h"

#include <QTcpSocket>
#include <csignal>
#include <unistd.h>

namespace {

const QString PidFile = QStringLiteral("/tmp/tavrin-stunnel.pid");

bool accepts(int port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, quint16(port));
    return socket.waitForConnected(500);
}

int pidFromFile()
{
    return readFile(PidFile).trimmed().toInt();
}

bool alive(int pid)
{
    return pid > 0 && ::kill(pid, 0) == 0;
}

} // namespace

class TestStunnelManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("stunnel4")).isEmpty())
            QSKIP("stunnel4 is not installed");
    }
    void cleanup()
    {
        const int pid = pidFromFile();
        if (alive(pid))
            ::kill(pid, SIGTERM);
        QTRY_VERIFY(!alive(pid));
        QFile::remove(PidFile);
    }

    // The second manager stands for the next connection, or the next run of the program after a crash.
    void secondStartStopsTheFirst()
    {
        StunnelManager first;
        first.setConfigAndRunProcess(QStringLiteral("127.0.0.1"), 9, QStringLiteral("a.example"));
        QTRY_VERIFY_WITH_TIMEOUT(accepts(first.getPort()), 10000);
        QTRY_VERIFY(alive(pidFromFile()));
        const int firstPid = pidFromFile();

        StunnelManager second;
        second.setConfigAndRunProcess(QStringLiteral("127.0.0.1"), 9, QStringLiteral("b.example"));
        QTRY_VERIFY_WITH_TIMEOUT(!alive(firstPid), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(accepts(second.getPort()), 10000);
        QTRY_VERIFY(pidFromFile() != firstPid && alive(pidFromFile()));
    }

    // Only a stunnel that ends by itself is reported, not one it stops itself; one that dies is reported and
    // started again in tst_WholeProgram's "stunnel killed" rows.
    void ownStopIsNotReported()
    {
        StunnelManager manager;
        QSignalSpy stopped(&manager, &StunnelManager::stopped);
        manager.setConfigAndRunProcess(QStringLiteral("127.0.0.1"), 9, QStringLiteral("a.example"));
        QTRY_VERIFY_WITH_TIMEOUT(accepts(manager.getPort()) && alive(pidFromFile()), 10000);
        QTest::qWait(200); // the pid is watched from the next poll on
        manager.killProcess();
        QTest::qWait(300);
        QCOMPARE(stopped.count(), 0);
    }

    // Stopped the moment after its start (a connection cancelled while its configuration is written), before
    // stunnel has named itself: none is left running.
    void stopRightAfterStartLeavesNone()
    {
        StunnelManager manager;
        manager.setConfigAndRunProcess(QStringLiteral("127.0.0.1"), 9, QStringLiteral("a.example"));
        manager.killProcess();
        QTest::qWait(500);
        QVERIFY(!accepts(manager.getPort()));
    }

    // The pid file lies in /tmp: another local user can write it, or put a link there.
    void signalsOnlyItsOwnStunnel_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("pidFile");
        QTest::addColumn<bool>("killed");
        const QString stunnel = QStringLiteral("stunnel4");
        QTest::newRow("own stunnel") << stunnel << QStringLiteral("plain") << true;
        QTest::newRow("own process that is not stunnel") << QStringLiteral("sleep") << QStringLiteral("plain") << false;
        QTest::newRow("pid file that is a link") << stunnel << QStringLiteral("link") << false;
        QTest::newRow("pid file of another user") << stunnel << QStringLiteral("foreign") << false;
    }
    void signalsOnlyItsOwnStunnel()
    {
        QFETCH(QString, program);
        QFETCH(QString, pidFile);
        QFETCH(bool, killed);
        if (pidFile == QLatin1String("foreign") && ::getuid() != 0)
            QSKIP("giving the pid file away needs root");
        // A sleep named like stunnel stands for one: the kernel takes the name from the file.
        QTemporaryDir dir;
        const QString binary = dir.filePath(program);
        QVERIFY(QFile::copy(QStandardPaths::findExecutable(QStringLiteral("sleep")), binary));
        QProcess target;
        target.start(binary, {QStringLiteral("60")});
        QVERIFY(target.waitForStarted());

        const QString written = pidFile == QLatin1String("link") ? dir.filePath(QStringLiteral("pid")) : PidFile;
        QVERIFY(writeFile(written, QByteArray::number(target.processId()) + '\n'));
        if (pidFile == QLatin1String("link"))
            QVERIFY(QFile::link(written, PidFile));
        if (pidFile == QLatin1String("foreign"))
            QCOMPARE(::chown(QFile::encodeName(PidFile).constData(), 65534, 65534), 0);

        StunnelManager().killProcess();
        QCOMPARE(target.waitForFinished(killed ? 10000 : 1000), killed);
        target.kill();
        target.waitForFinished();
    }
};

QTEST_GUILESS_MAIN(TestStunnelManager)
#include "tst_StunnelManager.moc"
