#include <QtTest>

#include "ALog.h"
#include "AbstractFilterModel.h"
#include "AbstractServerModel.h"
#include "AccountSession.h"
#include "ConnectWindow.h"
#include "CustomMessageBox.h"
#include "FakeHelperDaemon.h"
#include "FakeService.h"
#include "LocalSettings.h"
#include "LoginWindow.h"
#include "MainWindow.h"
#include "ServerListWindow.h"
#include "TestEnvironment.h"
#include "UpdateOffer.h"

#include <memory>

// The window against the fake service and the fake helper daemon: the pages and messages it shows for what its
// account session decides (the decisions themselves are tested on the session), the update offer, closing, the log.
class TestMainWindowFlow : public QObject
{
    Q_OBJECT

    FakeService m_service;
    std::unique_ptr<FakeHelperDaemon> m_daemon;
    std::unique_ptr<MainWindow> m_window;

    void makeWindow()
    {
        m_window.reset(new MainWindow);
        m_window->checkAutologin();
    }
    // Signs in by hand from the sign-in page of a window opened as at start, and waits for the answer.
    NetworkManager::ApiError signInAs(const QString& password = QStringLiteral("demo"))
    {
        QSignalSpy auth(NetworkManager::instance(), &NetworkManager::auth);
        m_window->onSignIn(QStringLiteral("demo"), password);
        return NetworkManager::ApiError(auth.wait(20000) ? auth.at(0).at(0).toInt() : -1);
    }
    void useOneLogin()
    {
        FakeFixture& fixture = m_service.fixture();
        fixture.logins.resize(1);
        for (FakeServer& server : fixture.servers)
            server.user = fixture.logins.first().user;
    }
    static QStringList messageTexts()
    {
        QStringList texts;
        for (const CustomMessageBox::Message& message : CustomMessageBox::answeredMessages())
            texts << message.text;
        return texts;
    }
    // The pages up, by class: one, unless a page was left behind.
    QString shownPages() const
    {
        QStringList shown;
        for (const QWidget* page :
             m_window->centralWidget()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
            if (!page->isHidden())
                shown << QString::fromLatin1(page->metaObject()->className());
        return shown.join(QLatin1Char(' '));
    }

private slots:
    void initTestCase() { useFakeService(m_service); }

    void init()
    {
        LocalSettings::resetInstance();
        QFile::remove(LocalSettings::instance()->fileName());
        LocalSettings::resetInstance();
        LocalSettings::instance()->createDefaultSettings();
        NetworkManager::instance()->clearCache();
        NetworkManager::resetInstance();
        CustomMessageBox::clearAnswers();
        m_service.reset();
        m_service.setFixture(FakeFixture::demo());
        // No update offer unless a test asks for one: its question would wait for a user.
        m_service.fixture().upgradeVersion.clear();
        m_daemon.reset(new FakeHelperDaemon);
        QVERIFY(m_daemon->start());
        needExit = false;
    }

    void cleanup()
    {
        m_window.reset();
        m_daemon.reset();
        QCOMPARE(CustomMessageBox::pendingAnswers(), 0);
        // A quit makes every later event loop return at once; only the application's own loop clears that.
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QCoreApplication::exec();
    }

    // The pages up after the answer, and the messages shown.
    void signInShows_data()
    {
        QTest::addColumn<QString>("setup");
        QTest::addColumn<bool>("quits");
        QTest::addColumn<QString>("shown");
        QTest::newRow("several VPN logins: which one") << "" << false << "SelectionAccountWindow";
        QTest::newRow("one VPN login: the connect page") << "one" << false << "ConnectWindow";
        QTest::newRow("no subscription: the purchase page") << "nosub" << false << "SubscriptionPurchaseWindow";
        QTest::newRow("wrong password") << "wrong" << false << "LoginWindow: Wrong Login/Password.";
        // The probe address is on a closed loopback port, so the network itself looks absent.
        QTest::newRow("service unreachable, no network")
            << "down" << false << "LoginWindow: Application has no access to network.";
        QTest::newRow("service not verified")
            << "unverified" << false << "LoginWindow: " + CustomMessageBox::unverifiedServiceText();
        QTest::newRow("outdated version, then the program ends")
            << "old" << true << "LoginWindow: Your version is outdated. Please, download new Tavrin app on 127.0.0.1";
    }
    void signInShows()
    {
        QFETCH(QString, setup);
        if (setup == "one")
            useOneLogin();
        m_service.fixture().error = setup == "nosub" ? QStringLiteral("nosub") : QString();
        m_service.fixture().versionAccepted = setup != "old";
        m_service.setFault(setup == "down" ? FakeService::Fault::Close : FakeService::Fault::None);
        if (setup == "unverified")
            m_service.setCertificate(FakeCertificates::Kind::Expired);
        makeWindow();
        QFETCH(QString, shown);
        if (shown.contains(QLatin1Char(':')))
            CustomMessageBox::setNextAnswer(QMessageBox::Ok);
        signInAs(setup == "wrong" ? QStringLiteral("wrong") : QStringLiteral("demo"));
        QCOMPARE((QStringList {shownPages()} + messageTexts()).join(QStringLiteral(": ")), shown);
        QVERIFY(m_window->loginPage()->isEnabled());
        if (setup == "nosub") {
            // Bought in the browser: coming back to the window signs in again, and the purchase page goes.
            m_service.fixture().error.clear();
            QApplication::setActiveWindow(nullptr);
            QApplication::setActiveWindow(m_window.get());
            QTRY_COMPARE_WITH_TIMEOUT(shownPages(), QString(), 20000);
        }
        // Once the program is told to end, an event loop started now returns at once.
        QEventLoop loop;
        QTimer::singleShot(0, &loop, [&loop] { loop.exit(1); });
        QTEST(loop.exec() != 1, "quits");
    }

    // The update check comes by itself after a sign-in; the package offered, on an unverified server, is refused.
    void updateOfferFromUnverifiedServer()
    {
        FakeService impostor;
        impostor.setCertificate(FakeCertificates::Kind::UnknownAuthority);
        QVERIFY(impostor.start());
        m_service.fixture().upgradeVersion = QStringLiteral("9.0");
        m_service.fixture().upgradeLink = impostor.baseUrl() + QStringLiteral("/download/update.deb");
        useOneLogin();
        makeWindow();
        QCOMPARE(signInAs(), NetworkManager::Success);
        CustomMessageBox::setNextAnswer(QMessageBox::Yes);
        CustomMessageBox::setNextAnswer(QMessageBox::Ok);
        QTRY_COMPARE_WITH_TIMEOUT(CustomMessageBox::pendingAnswers(), 0, 20000);
        QCOMPARE(messageTexts(),
                 (QStringList {QStringLiteral("Available new update. Download it?"),
                               CustomMessageBox::unverifiedServiceText()}));
        // Not even a request reaches the impostor, so not a byte of its package is written.
        QCOMPARE(impostor.requestCount(), 0);
        QVERIFY(!m_window->updateOffer()->progressDialog());
    }

    // An answer without an offer ends the update checks until the next sign-in.
    void noOfferEndsUpdateChecks()
    {
        useOneLogin();
        makeWindow();
        QSignalSpy checked(NetworkManager::instance(), &NetworkManager::programUpdate);
        QCOMPARE(signInAs(), NetworkManager::Success);
        QVERIFY(checked.wait(20000));
        QVERIFY(!m_window->session()->isUpdateCheckPending());
    }

    // The helper daemon refuses the downloaded package: the failure is shown and the installed version keeps running.
    void refusedUpdateInstall()
    {
        makeWindow();
        m_daemon->setResult(0);
        CustomMessageBox::setNextAnswer(QMessageBox::Ok);
        m_window->updateOffer()->onDownloaded(QStringLiteral("/tmp/Tavrin-update/update.deb"));
        QTRY_COMPARE(messageTexts(), QStringList {QStringLiteral("Error during installing update.")});
        QCOMPARE(commandOf(m_daemon->requests().last()), quint32(HelperWire::UpdateInstall));
        QVERIFY(!needExit);
    }

    // A whole session: a failed sign-in, a sign-in, a failed refresh, a favourite, a location picked from the list, a
    // connection and the exit while connected, where No keeps it all and Yes ends the program, the tunnel and the kill
    // switch. The logs keep their lines but none of the secrets that passed.
    void wholeSessionLogsNoSecret()
    {
        FakeFixture& fixture = m_service.fixture();
        useOneLogin();
        fixture.password = QStringLiteral("AcctPw4711");
        FakeLogin& vpn = fixture.logins.first();
        vpn.pass = QStringLiteral("VpnPw0815");
        QByteArray script = readFile(QStringLiteral(TEST_DATA "/management/real-connect-and-stop.txt"));
        m_daemon->setManagementScript(ManagementScript::parse(
            script.replace("alice", vpn.user.toUtf8()).replace("\"Auth\" secret", "\"Auth\" " + vpn.pass.toUtf8())));
        const QtMessageHandler previous = qInstallMessageHandler(myMessageOutput);
        const auto restore = qScopeGuard([previous] { qInstallMessageHandler(previous); });

        makeWindow();
        m_service.setFault(FakeService::Fault::HttpError);
        CustomMessageBox::setNextAnswer(QMessageBox::Ok);
        QCOMPARE(signInAs(fixture.password), NetworkManager::NetworkFailure);
        m_service.setFault(FakeService::Fault::None);
        QCOMPARE(signInAs(fixture.password), NetworkManager::Success);
        m_service.setFault(FakeService::Fault::HttpError);
        m_window->session()->requestServerList();
        QTRY_VERIFY_WITH_TIMEOUT(readFile(applicationLogPath()).contains("Server List Finished Error"), 20000);
        m_service.setFault(FakeService::Fault::None);

        QSignalSpy updated(NetworkManager::instance(), &NetworkManager::serverUpdated);
        m_window->onServerList(OpenVpnTcp);
        QVERIFY(updated.wait(20000));
        ServerListWindow* list = m_window->serverListPage();
        list->onFilterChange(ServerListWindow::StandartFilter);
        QVERIFY(list->proxy()->setData(list->proxy()->index(0, 1), true));
        list->selServer(list->proxy()->index(0, 0));
        QTRY_COMPARE_WITH_TIMEOUT(m_window->connectPage()->state(), int(ConnectWindow::Connected), 15000);
        // Changing the VPN login asks about that, not about logging out; declined, the tunnel stays.
        CustomMessageBox::setNextAnswer(QMessageBox::No);
        m_window->onSubscriptionChange();
        QCOMPARE(CustomMessageBox::answeredMessages().last().title, QStringLiteral("Change VPN login"));
        for (QMessageBox::StandardButton answer : {QMessageBox::No, QMessageBox::Yes}) {
            CustomMessageBox::setNextAnswer(answer);
            m_window->close();
            QCOMPARE(m_window->isVisible(), answer == QMessageBox::No);
            QCOMPARE(needExit, answer == QMessageBox::Yes);
            QVERIFY(m_window->connectPage()->isConnected());
        }
        m_window.reset();
        QTRY_VERIFY_WITH_TIMEOUT(m_daemon->managementPort()->finished(), 10000);
        QVERIFY(m_daemon->managementPort()->mismatches().isEmpty());
        QCOMPARE(commandOf(m_daemon->requests().last()), quint32(HelperWire::FirewallOff));

        const QByteArray secrets[]
            = {fixture.password.toUtf8(), vpn.pass.toUtf8(), vpn.cert.split('\n').at(1), vpn.key.split('\n').at(1)};
        QByteArray logs = readFile(ALog::tracePath());
        for (const QFileInfo& file :
             QDir(QFileInfo(applicationLogPath()).path()).entryInfoList(QDir::Files | QDir::Hidden))
            logs += readFile(file.filePath());
        for (const QByteArray& secret : secrets)
            QVERIFY2(!logs.contains(secret), secret.constData());
        // The lines are still there, without their secrets.
        QVERIFY(logs.contains("&pass=***&act=wizardsetup - server replied"));
    }
};

TAVRIN_PAGE_TEST_MAIN(TestMainWindowFlow)
#include "tst_MainWindowFlow.moc"
