#include <QtTest>

#include "ApiTestEnvironment.h"
#include "FakeService.h"
#include "GetManager.h"
#include "ServiceUrls.h"

// The request channel against the fake service over real HTTPS on loopback.
class TestGetManager : public QObject
{
    Q_OBJECT

private:
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
        m_service.fixture().timezone = QStringLiteral("Europe/Berlin");
    }
    void init()
    {
        m_service.reset();
        m_probeSite.reset();
    }

    void resendsFailedAttempts_data()
    {
        QTest::addColumn<int>("failures");
        QTest::addColumn<int>("fault");
        QTest::addColumn<int>("attempts");
        QTest::addColumn<bool>("success");
        const int httpError = int(FakeService::Fault::HttpError);
        QTest::newRow("first attempt answers") << 0 << httpError << 1 << true;
        QTest::newRow("HTTP error then success on the first re-send") << 1 << httpError << 2 << true;
        QTest::newRow("five failures then success on the last re-send") << 5 << httpError << 6 << true;
        QTest::newRow("six failures give up") << 6 << httpError << 6 << false;
        QTest::newRow("a seventh attempt is never made") << 100 << httpError << 6 << false;
    }
    void resendsFailedAttempts()
    {
        QFETCH(int, failures);
        QFETCH(int, fault);
        QFETCH(int, attempts);
        QFETCH(bool, success);
        m_service.failNext(failures, FakeService::Fault(fault));
        GetManager channel(10000, nullptr);
        QSignalSpy finished(&channel, &GetManager::finished);
        channel.getAsync(timeUrl(), 3);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QCOMPARE(finished.at(0).at(0).toInt(), 0);
        QCOMPARE(m_service.requestCount(), attempts);
        QCOMPARE(channel.success, success);
        QCOMPARE(channel.errorString.isEmpty(), success);
        QCOMPARE(channel.retryCount, attempts - 1);
        if (success)
            QVERIFY(channel.data.contains("<timezone>"));
        // Nothing more arrives once the request has been reported.
        QTest::qWait(50);
        QCOMPARE(finished.count(), 1);
    }

    void droppedConnectionsEndInFailure()
    {
        // Qt's HTTP layer itself re-sends once on a connection closed before any answer, so only the outcome
        // is fixed here, not the count at the fake.
        m_service.setFault(FakeService::Fault::Close);
        GetManager channel(10000, nullptr);
        QSignalSpy finished(&channel, &GetManager::finished);
        channel.getAsync(timeUrl(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QVERIFY(!channel.success);
        QVERIFY(!channel.errorString.isEmpty());
        QCOMPARE(channel.retryCount, 5);
        QVERIFY(m_service.requestCount() >= 6);
    }

    void failedRequestKeepsPreviousBody()
    {
        GetManager channel(10000, nullptr);
        QSignalSpy finished(&channel, &GetManager::finished);
        channel.getAsync(timeUrl(), 3);
        QTRY_COMPARE(finished.count(), 1);
        const QByteArray first = channel.data;
        QVERIFY(!first.isEmpty());

        m_service.setFault(FakeService::Fault::HttpError);
        channel.getAsync(timeUrl(), 3);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 2, 20000);
        QVERIFY(!channel.success);
        QCOMPARE(channel.data, first);
    }

    void silentServerIsTriedSixTimes()
    {
        m_service.setFault(FakeService::Fault::Hang);
        GetManager channel(200, nullptr);
        QSignalSpy finished(&channel, &GetManager::finished);
        channel.getAsync(timeUrl(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QVERIFY(!channel.success);
        QVERIFY(!channel.errorString.isEmpty());
        QTRY_COMPARE(m_service.requestCount(), 6);
        QTest::qWait(300);
        QCOMPARE(m_service.requestCount(), 6);
    }

    void slowAnswerWithinTimeLimitIsTaken()
    {
        m_service.setDelay(150);
        GetManager channel(5000, nullptr);
        QSignalSpy finished(&channel, &GetManager::finished);
        channel.getAsync(timeUrl(), 3);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 10000);
        QVERIFY(channel.success);
        QCOMPARE(m_service.requestCount(), 1);
    }

    void probeTellsNetworkFromNoNetwork_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<int>("fault");
        QTest::addColumn<bool>("connected");
        QTest::newRow("page with a body means connected")
            << QStringLiteral("site") << int(FakeService::Fault::None) << true;
        QTest::newRow("empty answer counts as no network")
            << QStringLiteral("site") << int(FakeService::Fault::Empty) << false;
        QTest::newRow("refused connection means no network")
            << QStringLiteral("refused") << int(FakeService::Fault::None) << false;
        QTest::newRow("silent site times out as no network")
            << QStringLiteral("site") << int(FakeService::Fault::Hang) << false;
    }
    void probeTellsNetworkFromNoNetwork()
    {
        QFETCH(QString, target);
        QFETCH(int, fault);
        QFETCH(bool, connected);
        m_probeSite.setFault(FakeService::Fault(fault));
        const QByteArray url = target == QLatin1String("site") ? (m_probeSite.baseUrl() + QStringLiteral("/")).toUtf8()
                                                               : QByteArray("http://127.0.0.1:1/");
        qputenv("TAVRIN_PROBE_URL", url);
        QCOMPARE(ServiceUrls::probe(), QString::fromUtf8(url));

        GetManager channel(300, nullptr);
        QSignalSpy finished(&channel, &GetManager::finished);
        channel.getAsync(timeUrl(), 3);
        QTRY_COMPARE(finished.count(), 1);
        const QByteArray answer = channel.data;

        QCOMPARE(channel.checkInternetBlock(), connected);
        // The probe is not the channel's business: its last answer stays and no handler hears of the probe.
        QVERIFY(channel.success);
        QCOMPARE(channel.data, answer);
        QCOMPARE(finished.count(), 1);
        qputenv("TAVRIN_PROBE_URL", "http://127.0.0.1:1/");
    }
};

TAVRIN_API_TEST_MAIN(TestGetManager)

#include "tst_GetManager.moc"
