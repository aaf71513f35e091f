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

private:
    FakeService m_service;
    FakeService m_plainSite;

    static QString offeredLink(const FakeService& service)
    {
        return service.baseUrl() + QStringLiteral("/download/update.deb");
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
        QTest::newRow("running version") << QStringLiteral("3.6.9") << 306009;
        QTest::newRow("two-digit patch") << QStringLiteral("3.6.10") << 306010;
        QTest::newRow("no patch") << QStringLiteral("3.7") << 307000;
        QTest::newRow("one part is not scaled") << QStringLiteral("4") << 4;
        QTest::newRow("major with a zero minor") << QStringLiteral("4.0") << 400000;
        QTest::newRow("parts past the third are ignored") << QStringLiteral("1.2.3.4") << 102003;
        QTest::newRow("empty minor counts as 0") << QStringLiteral("3..9") << 300009;
        QTest::newRow("minor of 100 runs into the major") << QStringLiteral("3.100.0") << 400000;
        QTest::newRow("not a number") << QStringLiteral("beta") << 0;
        QTest::newRow("empty text") << QString() << 0;
    }
    void versionToNumber()
    {
        QFETCH(QString, version);
        QFETCH(int, number);
        QCOMPARE(SoftwareUpdater::versionToNumber(version), number);
    }

    void offer_data()
    {
        QTest::addColumn<QString>("offered");
        QTest::addColumn<FakeService::Fault>("fault");
        QTest::addColumn<bool>("newer");
        QTest::addColumn<bool>("error");
        const auto none = FakeService::Fault::None;
        QTest::newRow("3.6.10 is newer") << QStringLiteral("3.6.10") << none << true << false;
        QTest::newRow("3.7 is newer") << QStringLiteral("3.7") << none << true << false;
        QTest::newRow("4.0 is newer") << QStringLiteral("4.0") << none << true << false;
        QTest::newRow("the running version is not") << QStringLiteral("3.6.9") << none << false << false;
        QTest::newRow("one-part 4 is never newer") << QStringLiteral("4") << none << false << false;
        QTest::newRow("no offer is an error") << QString() << none << false << true;
        QTest::newRow("failed check is an error")
            << QStringLiteral("9.9") << FakeService::Fault::HttpError << false << true;
    }
    void offer()
    {
        QFETCH(QString, offered);
        QFETCH(FakeService::Fault, fault);
        QFETCH(bool, newer);
        QFETCH(bool, error);
        m_service.fixture().upgradeVersion = offered;
        m_service.setFault(fault);
        SoftwareUpdater updater;
        QSignalSpy newUpdate(&updater, &SoftwareUpdater::newUpdate);
        QSignalSpy versionError(&updater, &SoftwareUpdater::versionError);
        QSignalSpy remote(&updater, &SoftwareUpdater::remoteVersion);
        QSignalSpy answered(NetworkManager::instance(), &NetworkManager::programUpdate);
        updater.check();
        QVERIFY(answered.wait(30000));
        QCOMPARE(newUpdate.count(), newer ? 1 : 0);
        QCOMPARE(versionError.count(), error ? 1 : 0);
        QCOMPARE(remote.count(), error ? 0 : 1);
        QCOMPARE(updater.getRemoteVersion(), newer ? offered : QString());
    }

    void secondCheckIsHeardTwice()
    {
        SoftwareUpdater updater;
        QSignalSpy newUpdate(&updater, &SoftwareUpdater::newUpdate);
        QSignalSpy answered(NetworkManager::instance(), &NetworkManager::programUpdate);
        updater.check();
        QVERIFY(answered.wait(30000));
        updater.check();
        QVERIFY(answered.wait(30000));
        QCOMPARE(newUpdate.count(), 3);
    }

    void download_data()
    {
        QTest::addColumn<bool>("sized");
        QTest::newRow("with a length header") << true;
        QTest::newRow("without a length header") << false;
    }
    void download()
    {
        QFETCH(bool, sized);
        m_service.setUnsizedDownloads(!sized);
        m_service.fixture().packageSize = 3 * 1024 * 1024;
        SoftwareUpdater updater;
        QSignalSpy answered(NetworkManager::instance(), &NetworkManager::programUpdate);
        QSignalSpy progress(&updater, &SoftwareUpdater::progressDownload);
        QSignalSpy complete(&updater, &SoftwareUpdater::downloadComplited);
        QSignalSpy failed(&updater, &SoftwareUpdater::downloadFailed);
        updater.check();
        QVERIFY(answered.wait(30000));
        updater.downloadUpdate();
        QVERIFY(complete.wait(30000));
        QCOMPARE(failed.count(), 0);

        const QString path = complete.at(0).at(0).toString();
        QCOMPARE(QFileInfo(path).fileName(), QStringLiteral("update.deb"));
        QVERIFY(QFileInfo(path).dir().dirName().startsWith(QStringLiteral("Tavrin-")));
        QFile package(path);
        QVERIFY(package.open(QIODevice::ReadOnly));
        QCOMPARE(package.readAll(), FakeAnswers::package(3 * 1024 * 1024));
        QVERIFY(!progress.isEmpty());
        for (const QList<QVariant>& step : qAsConst(progress)) {
            const float value = step.at(0).toFloat();
            if (sized)
                QVERIFY(value >= 0 && value <= 1);
            else
                QVERIFY(value < 0 || value == 1); // unknown total until the last step reports it
        }
        if (sized)
            QCOMPARE(progress.constLast().at(0).toFloat(), 1.0f);
    }

    void packageOutlivesTheUpdater()
    {
        QString path;
        {
            SoftwareUpdater updater;
            QSignalSpy answered(NetworkManager::instance(), &NetworkManager::programUpdate);
            QSignalSpy complete(&updater, &SoftwareUpdater::downloadComplited);
            updater.check();
            QVERIFY(answered.wait(30000));
            updater.downloadUpdate();
            QVERIFY(complete.wait(30000));
            path = complete.at(0).at(0).toString();
        }
        QTest::qWait(10); // deferred deletion of the download
        QVERIFY(QFile::exists(path));
    }

    void failedDownloadIsReported_data()
    {
        QTest::addColumn<FakeService::Fault>("fault");
        QTest::newRow("HTTP error") << FakeService::Fault::HttpError;
        QTest::newRow("connection closed") << FakeService::Fault::Close;
    }
    void failedDownloadIsReported()
    {
        QFETCH(FakeService::Fault, fault);
        SoftwareUpdater updater;
        QSignalSpy answered(NetworkManager::instance(), &NetworkManager::programUpdate);
        QSignalSpy complete(&updater, &SoftwareUpdater::downloadComplited);
        QSignalSpy failed(&updater, &SoftwareUpdater::downloadFailed);
        updater.check();
        QVERIFY(answered.wait(30000));
        m_service.setFault(fault);
        updater.downloadUpdate();
        QVERIFY(failed.wait(30000));
        QCOMPARE(complete.count(), 0);
    }

    void cancelledDownloadSaysNothing()
    {
        SoftwareUpdater updater;
        QSignalSpy answered(NetworkManager::instance(), &NetworkManager::programUpdate);
        QSignalSpy complete(&updater, &SoftwareUpdater::downloadComplited);
        QSignalSpy failed(&updater, &SoftwareUpdater::downloadFailed);
        updater.check();
        QVERIFY(answered.wait(30000));
        m_service.setDelay(300);
        updater.downloadUpdate();
        QTRY_COMPARE(m_service.requestCount(), 2);
        updater.cancelDownloadUpdate();
        QTest::qWait(600); // past the moment the answer would have arrived
        QCOMPARE(complete.count(), 0);
        QCOMPARE(failed.count(), 0);

        // The updater is idle again and can start over.
        m_service.setDelay(0);
        updater.downloadUpdate();
        QVERIFY(complete.wait(30000));
    }

    void configByUrl_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("success");
        QTest::newRow("configuration text") << QStringLiteral("/download/config.ovpn") << true;
        QTest::newRow("missing file") << QStringLiteral("/nothing/here") << false;
        QTest::newRow("refused connection") << QStringLiteral("refused") << false;
    }
    void configByUrl()
    {
        QFETCH(QString, path);
        QFETCH(bool, success);
        const QString url = path == QLatin1String("refused") ? QStringLiteral("http://127.0.0.1:1/config")
                                                             : m_plainSite.baseUrl() + path;
        DownloadConfig download(url, nullptr);
        QSignalSpy done(&download, &QThread::finished);
        download.start();
        QVERIFY(done.wait(30000));
        QCOMPARE(download.success, success);
        if (success)
            QCOMPARE(download.data, QString::fromUtf8(FakeFixture::demo().config));
    }
};

TAVRIN_API_TEST_MAIN(TestSoftwareUpdater)

#include "tst_SoftwareUpdater.moc"
