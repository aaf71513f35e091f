#include <QtTest>

#include "FakeHelperDaemon.h"
#include "ServiceConnector.h"

// A daemon that accepts a request and never answers: the client gives up after its 5 s receive
// time-out and reports false.
class TestServiceConnectorSilence : public QObject
{
    Q_OBJECT

private slots:
    void silentDaemonGivesFalseAfterTimeout()
    {
        FakeHelperDaemon daemon;
        QVERIFY(daemon.start());
        daemon.exportPort();
        daemon.setBehaviour(FakeHelperDaemon::Behaviour::StaySilent);

        ServiceConnector connector;
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!connector.firewallOn(QStringLiteral("127.0.0.1"), QStringLiteral("tun0"), {}));
        QVERIFY2(timer.elapsed() >= 4500, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(daemon.requestCount(), 1);
    }
};

QTEST_GUILESS_MAIN(TestServiceConnectorSilence)
#include "tst_ServiceConnectorSilence.moc"
