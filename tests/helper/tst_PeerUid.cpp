// Finding the caller's uid in the kernel's socket table, and reading the wire's text fields.

#include "PeerUid.h"
#include "WireText.h"

#include <QTest>

class tst_PeerUid : public QObject
{
    Q_OBJECT

private slots:
    void table_data();
    void table();
    void ucs4_data();
    void ucs4();
};

namespace {

const QByteArray table
    = "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode\n"
      "   0: 0100007F:5C25 00000000:0000 0A 00000000:00000000 00:00000000 00000000     0        0 1 1\n"
      "   1: 0100007F:5C25 0100007F:B5F4 01 00000000:00000000 00:00000000 00000000     0        0 2 1\n"
      "   2: 0100007F:B5F4 0100007F:5C25 01 00000000:00000000 00:00000000 00000000  1000        0 3 1\n"
      "   3: 0200A8C0:B5F5 0100007F:5C25 01 00000000:00000000 00:00000000 00000000  1001        0 4 1\n";

} // namespace

void tst_PeerUid::table_data()
{
    QTest::addColumn<int>("peerPort");
    QTest::addColumn<qint64>("uid");

    QTest::newRow("the client's end, not the daemon's") << 0xB5F4 << qint64(1000);
    QTest::newRow("only loopback ends count") << 0xB5F5 << qint64(-1);
}

void tst_PeerUid::table()
{
    QFETCH(int, peerPort);
    QFETCH(qint64, uid);
    QCOMPARE(PeerUid::find(::table, quint16(peerPort), 0x5C25), uid);
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
