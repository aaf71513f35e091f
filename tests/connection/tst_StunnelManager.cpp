#include <QtTest>

#include "StunnelManager.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <csignal>

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
    QFile file(PidFile);
    return file.open(QIODevice::ReadOnly) ? file.readLine().trimmed().toInt() : 0;
}

bool alive(int pid)
{
    return pid > 0 && ::kill(pid, 0) == 0;
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writePidFile(const QByteArray& text)
{
    QFile file(PidFile);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text);
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
        qputenv("PATH", m_path);
    }

    void configurationFile_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<int>("port");
        QTest::addColumn<QString>("sni");
        QTest::newRow("server name given") << "198.51.100.7" << 443 << "cdn.example.org";
        QTest::newRow("empty server name still written") << "198.51.100.7" << 8443 << "";
    }
    void configurationFile()
    {
        QFETCH(QString, host);
        QFETCH(int, port);
        QFETCH(QString, sni);
        StunnelManager manager;
        QVERIFY(manager.makeConfigFile(host, port, sni));
        const QByteArray expected = "sslVersion = all\r\n"
                                    "socket = l:TCP_NODELAY=1\r\n"
                                    "socket = r:TCP_NODELAY=1\r\n"
                                    "pid =/tmp/tavrin-stunnel.pid\r\n"
                                    "[openvpn]\r\n"
                                    "client = yes\r\n"
                                    "sni = "
            + sni.toUtf8() + "\r\naccept = 127.0.0.1:" + QByteArray::number(manager.getPort())
            + "\r\nconnect = " + host.toUtf8() + ":" + QByteArray::number(port) + "\r\n";
        QCOMPARE(contents(manager.configFilePath()), expected);
    }

    void freePortIsFree()
    {
        const int port = StunnelManager::getAvailablePort();
        QVERIFY(port > 0 && port < 65536);
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost, quint16(port)));
    }

    void runsAndStopsRealStunnel()
    {
        StunnelManager manager;
        manager.setConfigAndRunProcess(QStringLiteral("127.0.0.1"), 9, QStringLiteral("example.org"));
        const int port = manager.getPort();
        QVERIFY(port > 0);
        QTRY_VERIFY_WITH_TIMEOUT(accepts(port), 10000);
        QTRY_VERIFY(alive(pidFromFile()));
        const int pid = pidFromFile();

        manager.killProcess();
        QTRY_VERIFY_WITH_TIMEOUT(!alive(pid), 10000);
        QTRY_VERIFY(!accepts(port));
    }

    void secondStartStopsTheFirst()
    {
        StunnelManager first;
        first.setConfigAndRunProcess(QStringLiteral("127.0.0.1"), 9, QStringLiteral("a.example"));
        QTRY_VERIFY_WITH_TIMEOUT(accepts(first.getPort()), 10000);
        QTRY_VERIFY(alive(pidFromFile()));
        const int firstPid = pidFromFile();

        // A second manager stands for the next run of the program after a crash.
        StunnelManager second;
        second.setConfigAndRunProcess(QStringLiteral("127.0.0.1"), 9, QStringLiteral("b.example"));
        QTRY_VERIFY_WITH_TIMEOUT(!alive(firstPid), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(accepts(second.getPort()), 10000);
        QTRY_VERIFY(pidFromFile() != firstPid && alive(pidFromFile()));
    }

    void invalidPidKillsNothing_data()
    {
        QTest::addColumn<QByteArray>("pidText");
        QTest::addColumn<bool>("writeFile");
        QTest::newRow("no pid file") << QByteArray() << false;
        QTest::newRow("empty pid file") << QByteArray() << true;
        QTest::newRow("text instead of a number") << QByteArray("stunnel\n") << true;
        QTest::newRow("zero") << QByteArray("0\n") << true;
        QTest::newRow("negative") << QByteArray("-5\n") << true;
    }
    void invalidPidKillsNothing()
    {
        QFETCH(QByteArray, pidText);
        QFETCH(bool, writeFile);
        QFile::remove(PidFile);
        if (writeFile)
            writePidFile(pidText);
        const QString log = installFakeKill();
        StunnelManager manager;
        QTest::ignoreMessage(QtDebugMsg, "Can't kill stunnel. Invalid pid.");
        manager.killProcess();
        QVERIFY(!QFile::exists(log));
        QFile::remove(PidFile);
        QTest::ignoreMessage(QtDebugMsg, "Can't kill stunnel. Invalid pid.");
    }

    void validPidRunsKill()
    {
        writePidFile("424242\n");
        const QString log = installFakeKill();
        StunnelManager manager;
        manager.killProcess();
        // killProcess waits for "kill": the arguments are there once it returns.
        QCOMPARE(contents(log), QByteArray("424242\n"));
        QFile::remove(PidFile);
        QTest::ignoreMessage(QtDebugMsg, "Can't kill stunnel. Invalid pid.");
    }

private:
    // Puts a "kill" first on PATH that only writes its arguments down; returns that file's path.
    QString installFakeKill()
    {
        const QString script = m_bin.path() + QStringLiteral("/kill");
        const QString log = m_bin.path() + QStringLiteral("/kill.args");
        QFile::remove(log);
        QFile file(script);
        if (!file.exists()) {
            file.open(QIODevice::WriteOnly);
            file.write(QStringLiteral("#!/bin/sh\necho \"$@\" > '%1'\n").arg(log).toUtf8());
            file.close();
            file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
        qputenv("PATH", m_bin.path().toUtf8() + ':' + m_path);
        return log;
    }

    QTemporaryDir m_bin;
    QByteArray m_path = qgetenv("PATH");
};

QTEST_GUILESS_MAIN(TestStunnelManager)
#include "tst_StunnelManager.moc"
