#include <QtTest>

#include <QLocalSocket>
#include <QTemporaryDir>

#include "LocalPeer.h"

// Delivery to the running instance and the take-over after a crash are covered by the launch tests.
class TestLocalPeer : public QObject
{
    Q_OBJECT

private slots:
    // A length far beyond the cap must neither be waited for nor allocated.
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
};

QTEST_GUILESS_MAIN(TestLocalPeer)
#include "tst_LocalPeer.moc"
