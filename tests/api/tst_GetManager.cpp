#include <QtTest>

#include "ApiTestEnvironment.h"
#include "FakeService.h"
#include "GetManager.h"

// The request channel against the fake service over real HTTPS on loopback.
class TestGetManager : public QObject
{
    Q_OBJECT

    FakeService m_service;

    QUrl timeUrl() const { return QUrl(m_service.baseUrl() + QStringLiteral("/connect?act=time")); }

private slots:
    void initTestCase()
    {
        QString error;
        QVERIFY2(m_service.start(0, &error), qPrintable(error));
    }
    void init() { m_service.reset(); }

    void resendsFailedAttempts_data()
    {
        QTest::addColumn<int>("failures");
        QTest::addColumn<int>("attempts");
        QTest::addColumn<bool>("success");
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
};

TAVRIN_API_TEST_MAIN(TestGetManager)

#include "tst_GetManager.moc"
