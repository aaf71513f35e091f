#include <QtTest>

#include "ALog.h"
#include "AbstractFilterModel.h"
#include "AbstractServerModel.h"
#include "AccountWindow.h"
#include "ConnectWindow.h"
#include "CustomMessageBox.h"
#include "FakeHelperDaemon.h"
#include "FakeService.h"
#include "LocalSettings.h"
#include "LoginWindow.h"
#include "MainWindow.h"
#include "NetworkManager.h"
#include "SelectionAccountWindow.h"
#include "ServerListWindow.h"
#include "SubscriptionPurchaseWindow.h"
#include "SystemTray.h"
#include "TestEnvironment.h"

#include <QRadioButton>
#include <QScopeGuard>

#include <memory>

namespace {

QVariant setting(const QString& key)
{
    return LocalSettings::instance()->value(key);
}

QStringList messageTexts()
{
    QStringList texts;
    for (const CustomMessageBox::Message& message : CustomMessageBox::answeredMessages())
        texts << message.text;
    return texts;
}

} // namespace

// The page flow of the main window against the fake service and the fake helper daemon.
class TestMainWindowFlow : public QObject
{
    Q_OBJECT

private:
    FakeService m_service;
    std::unique_ptr<FakeHelperDaemon> m_daemon;
    std::unique_ptr<MainWindow> m_window;

    // Opens the window as at start, then signs in by hand from the sign-in page and waits for the answer.
    void makeWindow()
    {
        m_window.reset(new MainWindow);
        m_window->checkAutologin();
    }
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

    // With one VPN login a sign-in by hand goes straight to the connect page.
    void signInWithOneLogin()
    {
        useOneLogin();
        makeWindow();
        QCOMPARE(signInAs(), NetworkManager::Success);
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

    void signInByHand_data()
    {
        QTest::addColumn<bool>("oneLogin");
        QTest::addColumn<QString>("vpnLogin");
        QTest::newRow("one VPN login goes straight to the connect page") << true << "vpn-demo1";
        QTest::newRow("several VPN logins ask which one first") << false << "vpn-demo2";
    }
    void signInByHand()
    {
        QFETCH(bool, oneLogin);
        if (oneLogin)
            useOneLogin();
        makeWindow();
        QCOMPARE(signInAs(), NetworkManager::Success);
        if (!oneLogin) {
            QVERIFY(m_window->selectionPage()->isVisible());
            QVERIFY(!m_window->connectPage()->isVisible());
            const QList<QRadioButton*> buttons = m_window->selectionPage()->buttons();
            QCOMPARE(buttons.size(), 2);
            buttons.at(1)->setChecked(true);
            m_window->selectionPage()->onContinueClicked();
        }
        QVERIFY(m_window->connectPage()->isVisible());
        QVERIFY(!m_window->loginPage()->isVisible());
        QVERIFY(!m_window->selectionPage()->isVisible());
        QTEST(setting(Keys::VpnLogin).toString(), "vpnLogin");
        QCOMPARE(setting(Keys::RememberUser).toBool(), true);
        QVERIFY(!m_window->connectPage()->getServers().isEmpty());
        QVERIFY(CustomMessageBox::answeredMessages().isEmpty());
    }

    void failedSignInStaysOnSignInPage_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<int>("fault");
        QTest::addColumn<bool>("trusted");
        QTest::addColumn<QString>("message");
        QTest::newRow("wrong password") << "wrong" << int(FakeService::Fault::None) << true << "Wrong Login/Password.";
        // The probe address is on a closed loopback port, so the network itself looks absent.
        QTest::newRow("service unreachable, no network")
            << "demo" << int(FakeService::Fault::Close) << true << "Application has no access to network.";
        QTest::newRow("service not verified, the password not sent")
            << "demo" << int(FakeService::Fault::None) << false << CustomMessageBox::unverifiedServiceText();
    }
    void failedSignInStaysOnSignInPage()
    {
        QFETCH(QString, password);
        QFETCH(int, fault);
        QFETCH(bool, trusted);
        QFETCH(QString, message);
        m_service.setFault(FakeService::Fault(fault));
        if (!trusted)
            m_service.setCertificate(FakeCertificates::Kind::Expired);
        makeWindow();
        CustomMessageBox::setNextAnswer(QMessageBox::Ok);
        signInAs(password);
        QCOMPARE(messageTexts(), QStringList {message});
        QCOMPARE(m_service.requestCount() == 0, !trusted);
        QVERIFY(m_window->loginPage()->isVisible());
        QVERIFY(m_window->loginPage()->isEnabled());
        QVERIFY(!m_window->connectPage()->isVisible());
    }

    void noSubscriptionThenPurchase()
    {
        m_service.fixture().error = QStringLiteral("nosub");
        makeWindow();
        QCOMPARE(signInAs(), NetworkManager::NoSubscription);
        QVERIFY(m_window->purchasePage()->isVisible());
        QVERIFY(!m_window->loginPage()->isVisible());

        // The subscription is bought in the browser; coming back to the window signs in again.
        m_service.fixture().error.clear();
        QSignalSpy auth(NetworkManager::instance(), &NetworkManager::auth);
        QApplication::setActiveWindow(nullptr);
        QApplication::setActiveWindow(m_window.get());
        QVERIFY(auth.wait(20000));
        QCOMPARE(auth.at(0).at(0).toInt(), int(NetworkManager::Success));
        QVERIFY(!m_window->purchasePage()->isVisible());
        // Several logins, but the sign-in page was no longer up: the page stays as it was.
        QVERIFY(!m_window->selectionPage()->isVisible());
    }

    void outdatedVersionQuits()
    {
        m_service.fixture().versionAccepted = false;
        makeWindow();
        CustomMessageBox::setNextAnswer(QMessageBox::Ok);
        QEventLoop loop;
        QTimer::singleShot(20000, &loop, [&loop] { loop.exit(7); });
        m_window->onSignIn(QStringLiteral("demo"), QStringLiteral("demo"));
        // Quitting the application ends every running event loop with code 0.
        QCOMPARE(loop.exec(), 0);
        const QString host = QUrl(m_service.baseUrl()).host();
        QCOMPARE(messageTexts(),
                 QStringList {QStringLiteral("Your version is outdated. Please, download new Tavrin app on ") + host});
    }

    void updateFromUnverifiedServerIsRefused()
    {
        FakeService impostor;
        impostor.setCertificate(FakeCertificates::Kind::UnknownAuthority);
        QVERIFY(impostor.start());
        m_service.fixture().upgradeVersion = QStringLiteral("9.0");
        m_service.fixture().upgradeLink = impostor.baseUrl() + QStringLiteral("/download/update.deb");
        signInWithOneLogin();
        CustomMessageBox::setNextAnswer(QMessageBox::Yes);
        CustomMessageBox::setNextAnswer(QMessageBox::Ok);
        m_window->onCheckSoftwareUpdateScheduled();
        QTRY_COMPARE_WITH_TIMEOUT(CustomMessageBox::pendingAnswers(), 0, 20000);
        QCOMPARE(messageTexts(),
                 (QStringList {QStringLiteral("Available new update. Download it?"),
                               CustomMessageBox::unverifiedServiceText()}));
        // Not even a request reaches the impostor, so not a byte of its package is written.
        QCOMPARE(impostor.requestCount(), 0);
        QVERIFY(!m_window->progressDialog());
    }

    void cachedStart_data()
    {
        QTest::addColumn<bool>("serviceDown");
        QTest::newRow("service down: stays on the cached list, no message") << true;
        QTest::newRow("service slow: cached list first, then the background sign-in shows the window") << false;
    }
    void cachedStart()
    {
        QFETCH(bool, serviceDown);
        signInWithOneLogin();
        m_window.reset();
        NetworkManager::resetInstance();

        m_service.fixture().servers.resize(2);
        if (serviceDown)
            m_service.setFault(FakeService::Fault::Close);
        else
            m_service.setDelay(500);
        m_window.reset(new MainWindow);
        QSignalSpy auth(NetworkManager::instance(), &NetworkManager::auth);
        m_window->checkAutologin();
        QVERIFY(m_window->isAutoLoginPending());
        QVERIFY(!m_window->isVisible());
        QVERIFY(!m_window->loginPage()->isVisible());
        QVERIFY(m_window->connectPage()->isVisibleTo(m_window.get()));
        QCOMPARE(m_window->connectPage()->getServers().size(), 10);

        QVERIFY(auth.wait(20000));
        if (serviceDown) {
            QCOMPARE(auth.at(0).at(0).toInt(), int(NetworkManager::NetworkFailure));
            QVERIFY(!m_window->isAutoLoginPending());
            QCOMPARE(m_window->connectPage()->getServers().size(), 10);
            QVERIFY(!m_window->isVisible());
        } else {
            QCOMPARE(auth.at(0).at(0).toInt(), int(NetworkManager::Success));
            QCOMPARE(m_window->connectPage()->getServers().size(), 2);
            // The answer to the server list request that follows brings the window up.
            m_window->onServerListUpdateRequest();
            QTRY_VERIFY_WITH_TIMEOUT(m_window->isVisible(), 20000);
            QVERIFY(m_window->connectPage()->isVisible());
        }
        QVERIFY(CustomMessageBox::answeredMessages().isEmpty());
    }

    void logOut_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("loggedOut");
        QTest::newRow("yes forgets the user") << int(QMessageBox::Yes) << true;
        QTest::newRow("no keeps everything") << int(QMessageBox::No) << false;
    }
    void logOut()
    {
        QFETCH(int, answer);
        QFETCH(bool, loggedOut);
        signInWithOneLogin();
        m_window->onAccount();
        QVERIFY(m_window->accountPage()->isVisible());

        CustomMessageBox::setNextAnswer(QMessageBox::StandardButton(answer));
        m_window->onReturnToSignUp();
        QCOMPARE(messageTexts(), QStringList {QStringLiteral("Do you want to logout?")});
        QCOMPARE(m_window->loginPage()->isVisible(), loggedOut);
        QCOMPARE(m_window->accountPage()->isVisible(), !loggedOut);
        QCOMPARE(setting(Keys::RememberUser).toBool(), !loggedOut);
        QCOMPARE(setting(Keys::Login).toString().isEmpty(), loggedOut);
        QCOMPARE(NetworkManager::instance()->cacheUsers().isEmpty(), loggedOut);
    }

    void installDownloadedUpdate_data()
    {
        QTest::addColumn<bool>("taken");
        QTest::newRow("refused: the failure is shown and the installed version keeps running") << false;
        QTest::newRow("taken: the program exits for the new version") << true;
    }
    void installDownloadedUpdate()
    {
        QFETCH(bool, taken);
        makeWindow();
        m_daemon->setResult(taken ? 1 : 0);
        if (!taken)
            CustomMessageBox::setNextAnswer(QMessageBox::Ok);
        m_window->onDownloadNewUpdateComplited(QStringLiteral("/tmp/Tavrin-update/update.deb"));
        QCOMPARE(commandOf(m_daemon->requests().last()), quint32(HelperWire::UpdateInstall));
        QCOMPARE(needExit, taken);
        QCOMPARE(messageTexts(),
                 taken ? QStringList() : QStringList {QStringLiteral("Error during installing update.")});
    }

    void exitWhileConnected_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("exits");
        QTest::newRow("no keeps the window and the tunnel") << int(QMessageBox::No) << false;
        QTest::newRow("yes disconnects and quits") << int(QMessageBox::Yes) << true;
    }
    void exitWhileConnected()
    {
        QFETCH(int, answer);
        QFETCH(bool, exits);
        signInWithOneLogin();
        m_window->connectPage()->setUiState(ConnectWindow::Connecting);
        m_window->connectPage()->onConnected();
        QCOMPARE(m_window->tray()->currentStatus(), int(SystemTray::Connected));

        CustomMessageBox::setNextAnswer(QMessageBox::StandardButton(answer));
        m_window->close();
        QCOMPARE(messageTexts(), QStringList {QStringLiteral("VPN connection is active. Disconnect and exit?")});
        QCOMPARE(needExit, exits);
        QCOMPARE(m_window->isVisible(), !exits);
        QVERIFY(m_window->connectPage()->isConnected());
        if (!exits)
            return;
        // The program ends with the window: the tunnel goes and the kill switch is lifted.
        const int before = m_daemon->requests().size();
        m_window.reset();
        QTRY_VERIFY(m_daemon->requests().size() > before);
        QCOMPARE(commandOf(m_daemon->requests().last()), quint32(HelperWire::FirewallOff));
    }

    // Secrets pass through sign-in, an HTTP error, refreshes, a favourite, a location pick and a connection; the log
    // files keep their lines but none of the secrets.
    void logsHoldNoSecret()
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

        QSignalSpy updated(NetworkManager::instance(), &NetworkManager::serverUpdated);
        m_window->onServerList(OpenVpnTcp);
        QVERIFY(updated.wait(20000));
        ServerListWindow* list = m_window->serverListPage();
        list->onFilterChange(ServerListWindow::StandartFilter);
        QVERIFY(list->proxy()->setData(list->proxy()->index(0, 1), true));
        list->selServer(list->proxy()->index(0, 0));
        QTRY_COMPARE_WITH_TIMEOUT(m_window->connectPage()->state(), int(ConnectWindow::Connected), 15000);
        m_window->connectPage()->onClickConnect();
        QTRY_VERIFY_WITH_TIMEOUT(m_daemon->managementPort()->finished(), 10000);
        QVERIFY(m_daemon->managementPort()->mismatches().isEmpty());

        m_service.setFault(FakeService::Fault::HttpError);
        m_window->onServerListUpdateRequest();
        QTRY_VERIFY_WITH_TIMEOUT(readFile(applicationLogPath()).contains("Server List Finished Error"), 20000);

        const QByteArray secrets[]
            = {fixture.password.toUtf8(), vpn.pass.toUtf8(), vpn.cert.split('\n').at(1), vpn.key.split('\n').at(1)};
        const QString logDir = QFileInfo(applicationLogPath()).path();
        QByteArray logs = readFile(ALog::tracePath());
        for (const QFileInfo& file : QDir(logDir).entryInfoList(QDir::Files | QDir::Hidden)) {
            QVERIFY2(ownerOnly(file.filePath()), qPrintable(file.filePath()));
            logs += readFile(file.filePath());
        }
        QVERIFY(ownerOnly(logDir));
        for (const QByteArray& secret : secrets)
            QVERIFY2(!logs.contains(secret), secret.constData());
        // The lines are still there, without their secrets.
        QVERIFY(logs.contains("&pass=***&act=wizardsetup - server replied"));
        QVERIFY(logs.contains("favorite changed"));
        QVERIFY(logs.contains("ServerListWindow::selServer \"Amsterdam (192.0.2.11, login vpn-demo1)\""));
        // The settings file keeps the offline cache, owner-only.
        const QString settings = LocalSettings::instance()->fileName();
        QVERIFY(ownerOnly(settings));
        QVERIFY(readFile(settings).contains(vpn.pass.toUtf8()));
    }
};

TAVRIN_PAGE_TEST_MAIN(TestMainWindowFlow)
#include "tst_MainWindowFlow.moc"
