#include <QtTest>

#include <QLocalServer>
#include <QLocalSocket>
#include <QTemporaryDir>

#include "LocalPeer.h"

class TestLocalPeer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_runtime.isValid());
        QFile::setPermissions(m_runtime.path(),
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", m_runtime.path().toLocal8Bit());
    }

    void firstOwnsSecondDelivers()
    {
        LocalPeer owner(QStringLiteral("PeerTest"));
        QVERIFY(!owner.isClient());
        QVERIFY(!owner.sendMessage(QStringLiteral("to myself"), 500));
        QSignalSpy received(&owner, &LocalPeer::messageReceived);

        LocalPeer second(QStringLiteral("PeerTest"));
        QVERIFY(second.isClient());
        QCOMPARE(second.socketName(), owner.socketName());
        bool delivered = false;
        // The owner answers from its event loop, so deliver from a helper thread.
        QThread* sender = QThread::create([&]() { delivered = second.sendMessage(QStringLiteral("Wake up!"), 2000); });
        sender->start();
        QTRY_VERIFY(sender->isFinished());
        delete sender;
        QVERIFY(delivered);
        QCOMPARE(received.count(), 1);
        QCOMPARE(received.first().first().toString(), QStringLiteral("Wake up!"));
    }

    void otherIdIsIndependent()
    {
        LocalPeer a(QStringLiteral("PeerA"));
        LocalPeer b(QStringLiteral("PeerB"));
        QVERIFY(!a.isClient());
        QVERIFY(!b.isClient());
    }

    void staleLockAndSocketOfCrashedOwner()
    {
        LocalPeer probe(QStringLiteral("PeerStale"));
        // A lock naming a process that no longer exists, and a socket file nobody listens on.
        QFile lock(probe.lockFileName());
        QVERIFY(lock.open(QIODevice::WriteOnly));
        lock.write("2147483\nTavrin\n" + QSysInfo::machineHostName().toUtf8() + "\n");
        lock.close();
        QFile socketFile(probe.socketName());
        QVERIFY(socketFile.open(QIODevice::WriteOnly));
        socketFile.close();

        QVERIFY(!probe.isClient());
        QLocalSocket socket;
        socket.connectToServer(probe.socketName());
        QVERIFY(socket.waitForConnected(1000));
    }

    void oversizedMessageIsDropped()
    {
        LocalPeer owner(QStringLiteral("PeerBig"));
        QVERIFY(!owner.isClient());
        QSignalSpy received(&owner, &LocalPeer::messageReceived);
        QLocalSocket socket;
        socket.connectToServer(owner.socketName());
        QVERIFY(socket.waitForConnected(1000));
        socket.write(QByteArray("\xff\xff\xff\xff", 4) + QByteArray(100, 'x'));
        socket.flush();
        QTRY_COMPARE(socket.state(), QLocalSocket::UnconnectedState);
        QCOMPARE(received.count(), 0);
    }

private:
    QTemporaryDir m_runtime;
};

QTEST_GUILESS_MAIN(TestLocalPeer)
#include "tst_LocalPeer.moc"
