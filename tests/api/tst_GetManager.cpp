#include <QtTest>

#include "FakeService.h"
#include "GetManager.h"
#include "ServiceTls.h"
#include "TestEnvironment.h"

Q_DECLARE_METATYPE(FakeCertificates::Kind)

// The request channel against the fake service over real HTTPS on loopback.
class TestGetManager : public QObject
{
    Q_OBJECT

    FakeService m_service;

    QUrl timeUrl() const { return QUrl(m_service.baseUrl() + QStringLiteral("/connect?act=time")); }

private slots:
    void initTestCase() { useFakeService(m_service); }
    void init() { m_service.reset(); }

    // A refused certificate ends the handshake, so the request never reaches the service.
    void verifiesTheService_data()
    {
        QTest::addColumn<FakeCertificates::Kind>("certificate");
        QTest::addColumn<int>("error"); // QSslError::SslError; NoError when the service is trusted
        QTest::newRow("unknown authority is refused")
            << FakeCertificates::Kind::UnknownAuthority << int(QSslError::UnableToGetLocalIssuerCertificate);
        QTest::newRow("another host's certificate is refused")
            << FakeCertificates::Kind::OtherHost << int(QSslError::HostNameMismatch);
        QTest::newRow("expired certificate is refused")
            << FakeCertificates::Kind::Expired << int(QSslError::CertificateExpired);
        QTest::newRow("the authority of TAVRIN_CA_FILE is trusted")
            << FakeCertificates::Kind::Trusted << int(QSslError::NoError);
    }
    void verifiesTheService()
    {
        QFETCH(FakeCertificates::Kind, certificate);
        QFETCH(int, error);
        const bool refused = error != QSslError::NoError;
        m_service.setCertificate(certificate);
        GetManager channel(10000, nullptr);
        QSignalSpy finished(&channel, &GetManager::finished);
        if (refused)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^The certificate of 127.0.0.1 ")));
        channel.getAsync(timeUrl(), 3);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QCOMPARE(channel.success, !refused);
        QCOMPARE(channel.unverified, refused);
        QCOMPARE(m_service.requestCount(), refused ? 0 : 1);
        // The log and the caller get the TLS error itself, not "SSL handshake failed".
        const QString expected = QSslError(QSslError::SslError(error)).errorString();
        QVERIFY2(!refused || channel.errorString.contains(expected), qPrintable(channel.errorString));
    }

    // A file that gives no authority only warns; the fake service's own is read for verifiesTheService.
    void authorityFileWithoutCertificates_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("missing") << QStringLiteral("/nonexistent/ca.pem");
        QTest::newRow("without PEM") << QStringLiteral("/dev/null");
    }
    void authorityFileWithoutCertificates()
    {
        QFETCH(QString, file);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QRegularExpression::escape(file)));
        QVERIFY(ServiceTls::readAuthorities(file).isEmpty());
    }

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
