#include <QtTest>

#include "ApiTestEnvironment.h"
#include "DownloadConfig.h"
#include "FakeAnswers.h"
#include "FakeService.h"
#include "NetworkManager.h"
#include "SoftwareUpdater.h"

Q_DECLARE_METATYPE(FakeService::Fault)

// The updater against the fake service: version comparison, the offer, and the package download.
class TestSoftwareUpdater : public QObject
{
    Q_OBJECT

    FakeService m_service;
    FakeService m_plainSite;

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
        QString error;
        QVERIFY2(m_service.start(0, &error), qPrintable(error));
        m_plainSite.setPlainHttp(true);
        QVERIFY2(m_plainSite.start(0, &error), qPrintable(error));
        qputenv("TAVRIN_API_URL", m_service.baseUrl().toUtf8());
        QSignalSpy auth(NetworkManager::instance(), &NetworkManager::auth);
        NetworkManager::instance()->authRequest(QStringLiteral("demo"), QStringLiteral("demo"));
        QVERIFY(auth.wait(30000));
    }
    void init()
    {
        m_service.reset();
        m_service.setFixture(FakeFixture::demo());
        m_plainSite.reset();
    }

    void versionToNumber_data()
    {
        QTest::addColumn<QString>("version");
        QTest::addColumn<int>("number");
        QTest::newRow("running version") << "3.6.9" << 306009;
        QTest::newRow("two-digit patch") << "3.6.10" << 306010;
        QTest::newRow("no patch") << "3.7" << 307000;
        QTest::newRow("one part is not scaled") << "4" << 4;
        QTest::newRow("major with a zero minor") << "4.0" << 400000;
        QTest::newRow("parts past the third are ignored") << "1.2.3.4" << 102003;
        QTest::newRow("not a number") << "beta" << 0;
    }
    void versionToNumber()
    {
        QFETCH(QString, version);
        QTEST(SoftwareUpdater::versionToNumber(version), "number");
    }

    void offer_data()
    {
        QTest::addColumn<QString>("offered");
        QTest::addColumn<FakeService::Fault>("fault");
        QTest::addColumn<QString>("signal");
        const auto none = FakeService::Fault::None;
        QTest::newRow("3.6.10 is newer") << "3.6.10" << none << "newUpdate";
        QTest::newRow("the running version is not") << "3.6.9" << none << "remoteVersion";
        QTest::newRow("no offer is an error") << "" << none << "versionError";
        QTest::newRow("failed check is an error") << "9.9" << FakeService::Fault::HttpError << "versionError";
    }
    void offer()
    {
        QFETCH(QString, offered);
        QFETCH(FakeService::Fault, fault);
        QFETCH(QString, signal);
        m_service.fixture().upgradeVersion = offered;
        m_service.setFault(fault);
        SoftwareUpdater updater;
        QSignalSpy newUpdate(&updater, &SoftwareUpdater::newUpdate);
        QSignalSpy versionError(&updater, &SoftwareUpdater::versionError);
        QSignalSpy remote(&updater, &SoftwareUpdater::remoteVersion);
        QVERIFY(check(updater));
        QCOMPARE(newUpdate.count(), signal == "newUpdate" ? 1 : 0);
        QCOMPARE(versionError.count(), signal == "versionError" ? 1 : 0);
        QCOMPARE(remote.count(), signal == "versionError" ? 0 : 1);
        QCOMPARE(updater.getRemoteVersion(), signal == "newUpdate" ? offered : QString());
    }

    void secondCheckIsHeardTwice()
    {
        SoftwareUpdater updater;
        QSignalSpy newUpdate(&updater, &SoftwareUpdater::newUpdate);
        QVERIFY(check(updater));
        QVERIFY(check(updater));
        QCOMPARE(newUpdate.count(), 3);
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
        QString path;
        QList<float> progress;
        {
            SoftwareUpdater updater;
            connect(&updater, &SoftwareUpdater::progressDownload, this, [&](float value) { progress << value; });
            QSignalSpy complete(&updater, &SoftwareUpdater::downloadComplited);
            QSignalSpy failed(&updater, &SoftwareUpdater::downloadFailed);
            QVERIFY(check(updater));
            m_service.setFault(fault);
            updater.downloadUpdate();
            QVERIFY((fault == FakeService::Fault::None ? complete : failed).wait(30000));
            QCOMPARE(complete.count() + failed.count(), 1);
            if (!failed.isEmpty())
                return;
            path = complete.at(0).at(0).toString();
        }
        QTest::qWait(10); // deferred deletion of the download: the package must outlive it
        QCOMPARE(QFileInfo(path).fileName(), QStringLiteral("update.deb"));
        QVERIFY(QFileInfo(path).dir().dirName().startsWith(QStringLiteral("Tavrin-")));
        QFile package(path);
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

    void configByUrl_data()
    {
        QTest::addColumn<QString>("url"); // relative to the plain site
        QTest::addColumn<bool>("success");
        QTest::newRow("configuration text") << "/download/config.ovpn" << true;
        QTest::newRow("missing file") << "/nothing/here" << false;
        QTest::newRow("refused connection") << "http://127.0.0.1:1/config" << false;
    }
    void configByUrl()
    {
        QFETCH(QString, url);
        QFETCH(bool, success);
        DownloadConfig download(url.startsWith('/') ? m_plainSite.baseUrl() + url : url, nullptr);
        QSignalSpy done(&download, &QThread::finished);
        download.start();
        QVERIFY(done.wait(30000));
        QCOMPARE(download.success, success);
        QCOMPARE(download.data, success ? QString::fromUtf8(FakeFixture::demo().config) : QString());
    }
};

TAVRIN_API_TEST_MAIN(TestSoftwareUpdater)

#include "tst_SoftwareUpdater.moc"
