#include <QtTest>

#include "FakeAnswers.h"
#include "FakeService.h"
#include "NetworkManager.h"
#include "SoftwareUpdater.h"
#include "TestEnvironment.h"

Q_DECLARE_METATYPE(FakeService::Fault)

// The updater against the fake service: version comparison, the offer, and the package download.
class TestSoftwareUpdater : public QObject
{
    Q_OBJECT

    FakeService m_service;

    // Runs one update check and waits for the service's answer.
    static bool check(SoftwareUpdater& updater)
    {
        QSignalSpy answered(NetworkManager::instance(), &NetworkManager::programUpdate);
        updater.check();
        return answered.wait(30000);
    }

private slots:
    void initTestCase()
    {
        useFakeService(m_service);
        QVERIFY(signInAndWait(NetworkManager::instance()) >= 0);
    }
    void init()
    {
        m_service.reset();
        m_service.setFixture(FakeFixture::demo());
    }

    // Versions compare as numbers of their first three parts, each part below 1000; only a newer one is offered.
    void offer_data()
    {
        QTest::addColumn<QString>("offered");
        QTest::addColumn<FakeService::Fault>("fault");
        QTest::addColumn<bool>("newer");
        const auto none = FakeService::Fault::None;
        QTest::newRow("3.6.10 is newer, not text order") << "3.6.10" << none << true;
        QTest::newRow("4.0 is newer") << "4.0" << none << true;
        QTest::newRow("the running version is not newer") << "3.6.9" << none << false;
        QTest::newRow("no offer") << "" << none << false;
        QTest::newRow("failed check") << "9.9" << FakeService::Fault::HttpError << false;
    }
    void offer()
    {
        QFETCH(QString, offered);
        QFETCH(FakeService::Fault, fault);
        m_service.fixture().upgradeVersion = offered;
        m_service.setFault(fault);
        SoftwareUpdater updater;
        QSignalSpy newUpdate(&updater, &SoftwareUpdater::newUpdate);
        QVERIFY(check(updater));
        QTEST(newUpdate.count() == 1, "newer");
    }

    void download_data()
    {
        QTest::addColumn<bool>("sized");
        QTest::addColumn<FakeService::Fault>("fault");
        QTest::newRow("with a length header") << true << FakeService::Fault::None;
        QTest::newRow("without a length header") << false << FakeService::Fault::None;
        QTest::newRow("HTTP error") << true << FakeService::Fault::HttpError;
        QTest::newRow("connection closed") << true << FakeService::Fault::Close;
    }
    void download()
    {
        QFETCH(bool, sized);
        QFETCH(FakeService::Fault, fault);
        m_service.setUnsizedDownloads(!sized);
        m_service.fixture().packageSize = 3 * 1024 * 1024;
        QList<float> progress;
        auto updater = std::make_unique<SoftwareUpdater>();
        connect(updater.get(), &SoftwareUpdater::progressDownload, this, [&](float value) { progress << value; });
        QSignalSpy complete(updater.get(), &SoftwareUpdater::downloadComplited);
        QSignalSpy failed(updater.get(), &SoftwareUpdater::downloadFailed);
        QVERIFY(check(*updater));
        m_service.setFault(fault);
        updater->downloadUpdate();
        QVERIFY((fault == FakeService::Fault::None ? complete : failed).wait(30000));
        QCOMPARE(complete.count() + failed.count(), 1);
        if (!failed.isEmpty())
            return;
        updater.reset();
        QTest::qWait(10); // deferred deletion of the download: the package must outlive it
        QFile package(complete.at(0).at(0).toString());
        QVERIFY(package.open(QIODevice::ReadOnly));
        QCOMPARE(package.readAll(), FakeAnswers::package(3 * 1024 * 1024));
        // A fraction of the known total; without one the values stay negative until the last.
        QVERIFY(!progress.isEmpty());
        for (float value : qAsConst(progress))
            QVERIFY(sized ? value >= 0 && value <= 1 : value < 0 || value == 1);
        if (sized)
            QCOMPARE(progress.last(), 1.0f);
    }

    void cancelledDownloadSaysNothing()
    {
        SoftwareUpdater updater;
        QSignalSpy complete(&updater, &SoftwareUpdater::downloadComplited);
        QSignalSpy failed(&updater, &SoftwareUpdater::downloadFailed);
        QVERIFY(check(updater));
        m_service.setDelay(300);
        updater.downloadUpdate();
        QTRY_COMPARE(m_service.requestCount(), 2);
        updater.cancelDownloadUpdate();
        QTest::qWait(600); // past the moment the answer would have arrived
        QCOMPARE(complete.count() + failed.count(), 0);
        // The updater is idle again and can start over.
        m_service.setDelay(0);
        updater.downloadUpdate();
        QVERIFY(complete.wait(30000));
    }
};

TAVRIN_API_TEST_MAIN(TestSoftwareUpdater)

#include "tst_SoftwareUpdater.moc"
