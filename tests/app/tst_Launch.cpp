#include <QtTest>

#include <QLocalSocket>

#include "LocalPeer.h"
#include "TestEnvironment.h"

#include <csignal>

// The program's start: the built program run as a user would, in a home of its own, and the parts of its start
// that a run cannot show.
class TestLaunch : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_home.reset(new QTemporaryDir());
        QVERIFY(QDir(m_home->path()).mkpath(QStringLiteral("run")));
        QFile::setPermissions(m_home->path() + QStringLiteral("/run"),
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }

    void cleanup()
    {
        for (QProcess* process : qAsConst(m_processes)) {
            process->kill();
            process->waitForFinished(5000);
        }
        qDeleteAll(m_processes);
        m_processes.clear();
    }

    // A hidden first start is woken by a second one; after a crash the next start takes over.
    void singleInstance()
    {
        QProcess* first = start({QStringLiteral("-h")});
        QTRY_VERIFY_WITH_TIMEOUT(log().contains("MainWindow::onHide"), 10000);
        QVERIFY(!log().contains("MainWindow::onShow"));
        QProcess* second = start({QStringLiteral("-a")});
        QVERIFY(second->waitForFinished(5000));
        QCOMPARE(second->exitStatus(), QProcess::NormalExit);
        QCOMPARE(second->exitCode(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(log().contains("MainWindow::onShow"), 5000);
        QCOMPARE(first->state(), QProcess::Running);

        ::kill(pid_t(first->processId()), SIGKILL);
        QVERIFY(first->waitForFinished(5000));
        QProcess* third = start({});
        QTRY_VERIFY_WITH_TIMEOUT(log().count("Not one") == 4, 10000);
        QCOMPARE(third->state(), QProcess::Running);
    }

    // The wake-up message to the running instance: a length far beyond the cap must neither be waited for nor
    // allocated.
    void oversizedMessageIsDropped()
    {
        QTemporaryDir runtime;
        QFile::setPermissions(runtime.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", runtime.path().toLocal8Bit());
        LocalPeer owner(QStringLiteral("PeerBig"));
        QVERIFY(!owner.isClient());
        QSignalSpy received(&owner, &LocalPeer::messageReceived);
        QLocalSocket socket;
        socket.connectToServer(owner.socketName());
        QVERIFY(socket.waitForConnected(1000));
        socket.write(QByteArray("\xff\xff\xff\xff", 4) + QByteArray(100, 'x'));
        QTRY_COMPARE(socket.state(), QLocalSocket::UnconnectedState);
        QCOMPARE(received.count(), 0);
    }

private:
    QProcess* start(const QStringList& arguments)
    {
        auto* process = new QProcess();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        const QString home = m_home->path();
        env.insert(QStringLiteral("HOME"), home);
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
        env.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/.local/share"));
        env.insert(QStringLiteral("XDG_CACHE_HOME"), home + QStringLiteral("/.cache"));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home + QStringLiteral("/run"));
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        process->setProcessEnvironment(env);
        process->start(QStringLiteral(TAVRIN_BINARY), arguments);
        m_processes << process;
        return process;
    }

    QByteArray log() const { return readFile(m_home->path() + QStringLiteral("/.local/share/QOLV/Tavrin/log.txt")); }

    QScopedPointer<QTemporaryDir> m_home;
    QList<QProcess*> m_processes;
};

QTEST_GUILESS_MAIN(TestLaunch)
#include "tst_Launch.moc"
