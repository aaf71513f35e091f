#include <QtTest>

#include "StunnelManager.h"

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

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

int pidFromFile()
{
    return contents(PidFile).trimmed().toInt();
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
        qputenv("PATH", m_path);
        const int pid = pidFromFile();
        if (alive(pid))
            ::kill(pid, SIGTERM);
        QTRY_VERIFY(!alive(pid));
        QFile::remove(PidFile);
    }

    void configurationFile_data()
    {
        QTest::addColumn<int>("port");
        QTest::addColumn<QString>("sni");
        QTest::newRow("empty server name still written") << 8443 << "";
    }
    void configurationFile()
    {
        QFETCH(int, port);
        QFETCH(QString, sni);
        StunnelManager manager;
        QVERIFY(manager.makeConfigFile(QStringLiteral("198.51.100.7"), port, sni));
        QCOMPARE(contents(manager.configFilePath()),
                 QStringLiteral("sslVersion = all\r\nsocket = l:TCP_NODELAY=1\r\nsocket = r:TCP_NODELAY=1\r\n"
                                "pid =/tmp/tavrin-stunnel.pid\r\n[openvpn]\r\nclient = yes\r\nsni = %1\r\n"
                                "accept = 127.0.0.1:%2\r\nconnect = 198.51.100.7:%3\r\n")
                     .arg(sni)
                     .arg(manager.getPort())
                     .arg(port)
                     .toUtf8());
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

    void killUsesThePidFile_data()
    {
        QTest::addColumn<QByteArray>("pidText"); // null: no pid file
        QTest::addColumn<QByteArray>("killArguments"); // empty: "kill" is not run
        QTest::newRow("no pid file") << QByteArray() << QByteArray();
        QTest::newRow("text instead of a number") << QByteArray("stunnel\n") << QByteArray();
        QTest::newRow("valid pid") << QByteArray("424242\n") << QByteArray("424242\n");
    }
    void killUsesThePidFile()
    {
        QFETCH(QByteArray, pidText);
        QFile pidFile(PidFile);
        pidFile.remove();
        if (!pidText.isNull())
            QVERIFY(pidFile.open(QIODevice::WriteOnly) && pidFile.write(pidText) && pidFile.flush());
        // A "kill" first on PATH that only writes its arguments down.
        const QString log = m_bin.path() + QStringLiteral("/kill.args");
        QFile script(m_bin.path() + QStringLiteral("/kill"));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write(QStringLiteral("#!/bin/sh\necho \"$@\" > '%1'\n").arg(log).toUtf8());
        script.close();
        script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        QFile::remove(log);
        qputenv("PATH", m_bin.path().toUtf8() + ':' + m_path);

        StunnelManager manager;
        manager.killProcess(); // waits for "kill": its arguments are there once it returns
        QTEST(contents(log), "killArguments");
        pidFile.remove();
    }

private:
    QTemporaryDir m_bin;
    QByteArray m_path = qgetenv("PATH");
};

QTEST_GUILESS_MAIN(TestStunnelManager)
#include "tst_StunnelManager.moc"
