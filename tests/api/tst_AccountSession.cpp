#include <QtTest>

#include <memory>

#include "AccountSession.h"
#include "FakeService.h"
#include "LocalSettings.h"
#include "TestEnvironment.h"

// The session against the fake service, without a window: each row is a sequence of events (the invokables below)
// and what the session decided, in order. Single sign-in outcomes are tested through the window.
class TestAccountSession : public QObject
{
    Q_OBJECT

    FakeService m_service;
    std::unique_ptr<AccountSession> m_session;
    bool m_tunnelUp = false;
    // The client's sign-in and list answers that no event has waited for yet.
    int m_answers = 0;
    int m_lists = 0;
    QStringList m_seen;

    void note(const char* decision, const QVector<ServerInfo>& servers)
    {
        m_seen << decision + QString::number(servers.size());
    }
    void wait(int& pending)
    {
        // The last answer's ping pass ends first: counted in the next one, it would have the list announced again.
        // Each result delivered hands the pool the pass's next job.
        QThreadPool* pool = NetworkManager::instance()->findChild<QThreadPool*>();
        do {
            pool->waitForDone();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
        } while (pool->activeThreadCount() > 0);
        QTRY_VERIFY_WITH_TIMEOUT(pending > 0, 20000);
        --pending;
    }
    // A list answer the client never gives, or not when wanted.
    void injectList(NetworkManager::ApiError error)
    {
        emit NetworkManager::instance()->serverUpdated(error, QString());
        --m_lists;
    }

    Q_INVOKABLE void one()
    {
        FakeFixture& fixture = m_service.fixture();
        fixture.logins.resize(1);
        for (FakeServer& server : fixture.servers)
            server.user = fixture.logins.first().user;
    }
    Q_INVOKABLE void lite() { m_service.fixture().accountType = QStringLiteral("lite"); }
    Q_INVOKABLE void down() { m_service.setFault(FakeService::Fault::HttpError); }
    Q_INVOKABLE void slow() { m_service.setDelay(300); }
    Q_INVOKABLE void tunnel() { m_tunnelUp = true; }
    Q_INVOKABLE void mode() { m_seen << (m_session->isLiteAccount() ? "lite" : "full"); }
    Q_INVOKABLE void hand() { m_session->signInByHand(QStringLiteral("demo"), QStringLiteral("demo")); }
    Q_INVOKABLE void again() { m_session->signInAgain(); }
    Q_INVOKABLE void restart() { startSession(); }
    Q_INVOKABLE void resume() { QVERIFY(m_session->resume()); }
    Q_INVOKABLE void choose() { m_session->chooseVpnLogin(QStringLiteral("vpn-demo2")); }
    Q_INVOKABLE void ask() { m_session->requestServerList(); }
    Q_INVOKABLE void out()
    {
        m_session->signOut();
        QVERIFY(NetworkManager::instance()->cacheUsers().isEmpty());
        QVERIFY(LocalSettings::instance()->value(Keys::Login).toString().isEmpty());
    }
    Q_INVOKABLE void answer() { wait(m_answers); }
    Q_INVOKABLE void listed() { wait(m_lists); }
    Q_INVOKABLE void listOk() { injectList(NetworkManager::Success); }
    Q_INVOKABLE void listOld() { injectList(NetworkManager::BadVersion); }
    Q_INVOKABLE void listFailed() { injectList(NetworkManager::NetworkFailure); }

    void startSession()
    {
        using Servers = const QVector<ServerInfo>&;
        m_session = std::make_unique<AccountSession>([this] { return m_tunnelUp; });
        AccountSession* s = m_session.get();
        connect(s, &AccountSession::resumedFromCache, this, [this](Servers list) { note("resumed", list); });
        connect(s, &AccountSession::signingIn, this, [this] { m_seen << "signingIn"; });
        connect(s, &AccountSession::signInAnswered, this, [this](bool ok) { m_seen += ok ? "accepted" : "answered"; });
        connect(s, &AccountSession::vpnLoginChoiceNeeded, this, [this] { m_seen << "choice"; });
        connect(s, &AccountSession::signedIn, this, [this](Servers list) { note("signedIn", list); });
        connect(s, &AccountSession::continuingOffline, this, [this](Servers list) { note("offline", list); });
        connect(s, &AccountSession::signInRefused, this, [this] { m_seen << "refused"; });
        connect(s, &AccountSession::subscriptionMissing, this, [this] { m_seen << "missing"; });
        connect(s, &AccountSession::signInFailed, this, [this] { m_seen << "failed"; });
        connect(s, &AccountSession::versionRejected, this, [this] { m_seen << "rejected"; });
        connect(s, &AccountSession::serverListArrived, this, [this](Servers list) { note("servers", list); });
        connect(s, &AccountSession::signedOut, this, [this] { m_seen << "signedOut"; });
        connect(s, &AccountSession::updateCheckDue, this, [this] { m_seen << "check"; });
    }

private slots:
    void initTestCase()
    {
        useFakeService(m_service);
        AccountSession::serverListRetryMs = 50;
        AccountSession::updateCheckDelayMs = 1000;
    }

    void init()
    {
        NetworkManager::resetInstance();
        LocalSettings::resetInstance();
        QFile::remove(LocalSettings::instance()->fileName());
        LocalSettings::resetInstance();
        m_service.reset();
        m_service.setFixture(FakeFixture::demo());
        connect(NetworkManager::instance(), &NetworkManager::auth, this, [this] { ++m_answers; });
        connect(NetworkManager::instance(), &NetworkManager::serverUpdated, this, [this] { ++m_lists; });
        m_answers = m_lists = 0;
        m_tunnelUp = false;
        m_seen.clear();
        startSession();
    }

    void decisions_data()
    {
        QTest::addColumn<QString>("events");
        QTest::addColumn<QString>("decisions");
        const QString in = QStringLiteral("signingIn accepted signedIn10 ");
        const QString choice = QStringLiteral("signingIn accepted choice");
        QTest::newRow("the chosen login's servers and the update check; the login is kept on the next sign-in")
            << "hand answer choose again answer" << choice + " signedIn3 accepted signedIn3 check";
        QTest::newRow("the account's mode follows the answers")
            << "one hand answer mode lite again answer mode" << in + "full accepted signedIn10 lite check";
        QTest::newRow("service down at a remembered start: the cached account stays")
            << "one hand answer restart down resume answer" << in + "resumed10 signingIn answered offline10 check";
        QTest::newRow("a list while the remembered user signs in is taken")
            << "one hand answer restart slow resume listOk answer"
            << in + "resumed10 signingIn servers10 accepted signedIn10 check";
        QTest::newRow("a list while signing in by hand is ignored") << "slow hand listOk answer" << choice;
        QTest::newRow("a list asked before sign-out is ignored")
            << "one hand answer slow ask out listed" << in + "signedOut check";
        QTest::newRow("a list while connected is ignored") << "one hand answer tunnel ask listed" << in + "check";
        QTest::newRow("a failed list is asked again, an outdated version is refused, sign-out drops the retry")
            << "one hand answer listFailed listed listOld listFailed out" << in + "servers10 rejected signedOut check";
    }
    void decisions()
    {
        QFETCH(QString, events);
        for (const QString& event : events.split(QLatin1Char(' '))) {
            QVERIFY2(QMetaObject::invokeMethod(this, qPrintable(event)), qPrintable(event));
            if (QTest::currentTestFailed())
                return;
        }
        // A pending update check is part of what was decided.
        if (m_session->isUpdateCheckPending())
            QVERIFY(QSignalSpy(m_session.get(), &AccountSession::updateCheckDue).wait(5000));
        QTEST(m_seen.join(QLatin1Char(' ')), "decisions");
        // Every answer of the client was awaited or injected: no request went out unasked, e.g. a dropped retry.
        QCOMPARE(m_answers + m_lists, 0);
    }

    // s: a sign-in's check, r: a failed check retried.
    void updateRetries_data()
    {
        QTest::addColumn<QString>("events");
        QTest::addColumn<int>("delay");
        QTest::newRow("each failure doubles the pause") << "srrr" << 4000;
        QTest::newRow("never more than an hour") << "s" + QString(20, QLatin1Char('r')) << 3600 * 1000;
        QTest::newRow("a sign-in starts over") << "srrrsr" << 1000;
    }
    void updateRetries()
    {
        QFETCH(QString, events);
        for (const QChar event : events)
            event == QLatin1Char('s') ? m_session->scheduleUpdateCheck() : m_session->retryUpdateCheck();
        QTEST(m_session->updateCheckDelay(), "delay");
    }
};

TAVRIN_API_TEST_MAIN(TestAccountSession)
#include "tst_AccountSession.moc"
