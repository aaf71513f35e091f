// Finding the caller's uid, and reading and logging the wire's text fields.

#include "PeerUid.h"
#include "WireText.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <unistd.h>

class tst_PeerUid : public QObject
{
    Q_OBJECT

private slots:
    void lookup();
    void forLog();
    void ucs4_data();
    void ucs4();
};

void tst_PeerUid::lookup()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, server.serverPort());
    QVERIFY(client.waitForConnected() && server.waitForNewConnection(1000));
    const PeerUid::Peer peer = PeerUid::lookup(client.localPort(), server.serverPort());
    QCOMPARE(peer.uid, qint64(::getuid()));
    QVERIFY(peer.inode != 0);
    QCOMPARE(PeerUid::lookup(client.localPort(), quint16(server.serverPort() + 1)).uid, qint64(-1));
}

void tst_PeerUid::forLog()
{
    const QString logged = WireText::forLog(QStringLiteral("UTC\nrequest from uid 0: x\r\u2028\x7f"));
    QCOMPARE(logged, QStringLiteral("UTC\\x0arequest from uid 0: x\\x0d\\u2028\\x7f"));
}

void tst_PeerUid::ucs4_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");

    auto ucs4 = [](const QVector<uint>& codes) {
        return QByteArray(reinterpret_cast<const char*>(codes.constData()), codes.size() * 4);
    };
    QTest::newRow("beyond the basic plane") << ucs4({0x1F600, 0}) << (QString(QChar(0xD83D)) + QChar(0xDE00)) << true;
    QTest::newRow("no terminating zero") << ucs4({'a', 'b'}) << QString() << false;
    QTest::newRow("above the last code point") << ucs4({0x110000, 0}) << QString() << false;
}

void tst_PeerUid::ucs4()
{
    QFETCH(QByteArray, field);
    QFETCH(QString, text);
    QFETCH(bool, valid);
    const QString read = WireText::readUcs4(field, 0, std::size_t(field.size()));
    QCOMPARE(!read.isNull(), valid);
    if (valid)
        QCOMPARE(read, text);
}

QTEST_GUILESS_MAIN(tst_PeerUid)
#include "tst_PeerUid.moc"
