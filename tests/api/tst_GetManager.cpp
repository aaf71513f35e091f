#include <QtTest>

#include "ApiTestEnvironment.h"
#include "FakeService.h"
#include "GetManager.h"

// The request channel against the fake service over real HTTPS on loopback.
class TestGetManager : public QObject
{
    Q_OBJECT

    FakeService m_service;
    FakeService m_probeSite;

    QUrl timeUrl() const { return QUrl(m_service.baseUrl() + QStringLiteral("/connect?act=time")); }

private slots:
    void initTestCase()
    {
        QString error;
        QVERIFY2(m_service.start(0, &error), qPrintable(error));
        m_probeSite.setPlainHttp(true);
        QVERIFY2(m_probeSite.start(0, &error), qPrintable(error));
    }
    void init()
    {
        m_service.reset();
        m_probeSite.reset();
    }

    void resendsFailedAttempts_data()
    {
        QTest::addColumn<int>("failures");
        QTest::addColumn<int>("attempts");
        QTest::addColumn<bool>("success");
        QTest::newRow("first attempt answers") << 0 << 1 << true;
        QTest::newRow("five failures then success on the last re-send") << 5 << 6 << true;
        QTest::newRow("a seventh attempt is never made") << 100 << 6 << false;
    }
    void resendsFailedAttempts()
    {
        QFETCH(int, failures);
        QFETCH(int, attempts);
        QFETCH(bool, success);
        m_service.failNext(failures, FakeService::Fault::HttpError);
        GetManager channel(10000, nullptr);
        QSignalSpy finished(&channel, &GetManager::finished);
        channel.getAsync(timeUrl(), 3);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QCOMPARE(finished.at(0).at(0).toInt(), 0);
        QCOMPARE(m_service.requestCount(), attempts);
        QCOMPARE(channel.success, success);
        QCOMPARE(channel.errorString.isEmpty(), success);
        QCOMPARE(channel.retryCount, attempts - 1);
        QTest::qWait(50);
        QCOMPARE(finished.count(), 1);
    }

    void silentServerIsTriedSixTimes()
    {
        m_service.setFault(FakeService::Fault::Hang);
        GetManager channel(200, nullptr);
        QSignalSpy finished(&channel, &GetManager::finished);
        channel.getAsync(timeUrl(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QVERIFY(!channel.success);
        QTRY_COMPARE(m_service.requestCount(), 6);
        QTest::qWait(300);
        QCOMPARE(m_service.requestCount(), 6);
    }

    void probeTellsNetworkFromNoNetwork_data()
    {
        QTest::addColumn<bool>("refused");
        QTest::addColumn<int>("fault");
        QTest::addColumn<bool>("connected");
        QTest::newRow("page with a body") << false << int(FakeService::Fault::None) << true;
        QTest::newRow("empty answer") << false << int(FakeService::Fault::Empty) << false;
        QTest::newRow("refused connection") << true << int(FakeService::Fault::None) << false;
    }
    void probeTellsNetworkFromNoNetwork()
    {
        QFETCH(bool, refused);
        QFETCH(int, fault);
        m_probeSite.setFault(FakeService::Fault(fault));
        qputenv("TAVRIN_PROBE_URL", refused ? "http://127.0.0.1:1/" : (m_probeSite.baseUrl() + "/").toUtf8());
        GetManager channel(300, nullptr);
        QSignalSpy finished(&channel, &GetManager::finished);
        channel.getAsync(timeUrl(), 3);
        QTRY_COMPARE(finished.count(), 1);
        const QByteArray answer = channel.data;
        QTEST(channel.checkInternetBlock(), "connected");
        // The probe leaves the channel's last answer alone and reports to no handler.
        QVERIFY(channel.success);
        QCOMPARE(channel.data, answer);
        QCOMPARE(finished.count(), 1);
        qputenv("TAVRIN_PROBE_URL", "http://127.0.0.1:1/");
    }
};

TAVRIN_API_TEST_MAIN(TestGetManager)

#include "tst_GetManager.moc"
