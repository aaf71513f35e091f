#include <QtTest>

#include <QLocalSocket>
#include <QTemporaryDir>

#include "LocalPeer.h"

// Delivery to the running instance and the take-over after a crash are covered by the launch tests.
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

    void otherIdIsIndependent()
    {
        LocalPeer a(QStringLiteral("PeerA"));
        LocalPeer b(QStringLiteral("PeerB"));
        QVERIFY(!a.isClient());
        QVERIFY(!b.isClient());
        QVERIFY(LocalPeer(QStringLiteral("PeerA")).isClient());
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
