#include <QDesktopServices>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include "AccountWindow.h"
#include "CustomMessageBox.h"
#include "FakeService.h"
#include "LocalSettings.h"
#include "LoginWindow.h"
#include "NetworkManager.h"
#include "SubscriptionPurchaseWindow.h"
#include "TestEnvironment.h"

// The sign-in page; then, signed in against the fake service, the account and purchase pages. Opened links are
// caught by a URL handler, so no browser starts.
class TestAccountPages : public QObject
{
    Q_OBJECT

public slots:
    void openUrl(const QUrl& url) { m_opened.append(url); }

private slots:
    void initTestCase()
    {
        useFakeService(m_service);
        qputenv("TAVRIN_SITE_URL", m_service.baseUrl().toUtf8());
        QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "openUrl");
    }
    void cleanupTestCase() { QDesktopServices::unsetUrlHandler(QStringLiteral("https")); }
    void init()
    {
        m_opened.clear();
        m_service.reset();
        m_service.setFixture(FakeFixture::demo());
    }
    void cleanup()
    {
        CustomMessageBox::clearAnswers();
        while (QGuiApplication::overrideCursor())
            QGuiApplication::restoreOverrideCursor();
    }

    // Return in the user name moves on to the password; Return there signs in, blanks sent as typed.
    void signInWithReturn()
    {
        const QString login = QStringLiteral(" user@example.org ");
        const QString password = QStringLiteral("   ");
        LoginWindow page;
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        QSignalSpy signedIn(&page, &LoginWindow::signedIn);
        page.loginEdit()->setFocus();
        QTest::keyClicks(page.loginEdit(), login);
        QTest::keyClick(page.loginEdit(), Qt::Key_Return);
        QVERIFY(page.passwordEdit()->hasFocus());
        QCOMPARE(signedIn.count(), 0);
        QTest::keyClicks(page.passwordEdit(), password);
        QTest::keyClick(page.passwordEdit(), Qt::Key_Return);
        QCOMPARE(signedIn.count(), 1);
        QCOMPARE(signedIn.first(), QVariantList({login, password}));
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
        page.restoreCursor();
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void loginAndExpiry_data()
    {
        QTest::addColumn<int>("logins");
        QTest::addColumn<QString>("vpnLogin");
        QTest::newRow("one login hides Change") << 1 << "vpn-demo1";
        QTest::newRow("several logins show Change") << 2 << "vpn-demo2";
    }
    void loginAndExpiry()
    {
        QFETCH(int, logins);
        QFETCH(QString, vpnLogin);
        FakeFixture& fixture = m_service.fixture();
        fixture.logins.resize(logins);
        // A login with blanks around it is shown without them.
        const QString stored = QStringLiteral(" %1 ").arg(vpnLogin);
        fixture.logins.last().user = stored;
        // Servers of logins the account does not have would add those logins to the client's list.
        for (FakeServer& server : fixture.servers)
            server.user = logins == 1 ? stored : server.user;
        signIn(stored);
        AccountWindow page;
        QSignalSpy changed(&page, &AccountWindow::accountChanged);
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        QCOMPARE(page.loginLabel()->text(), vpnLogin);
        const QDateTime expiry = NetworkManager::instance()->subscription(stored).expiresTime();
        QVERIFY(expiry.isValid());
        QVERIFY(page.expiresLabel()->text().contains(expiry.toString(QStringLiteral("dd.MM.yyyy"))));
        QCOMPARE(page.changeButton()->isVisible(), logins > 1);
        if (logins > 1) {
            QTest::mouseClick(page.changeButton(), Qt::LeftButton);
            QCOMPARE(changed.count(), 1);
        }
    }

    // A second press before the answer does nothing; an unverified service gets no request and is named.
    void linkAnswer_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("visibleAtAnswer");
        QTest::addColumn<QString>("loginSent");
        QTest::addColumn<bool>("trusted");
        QTest::newRow("renew on the visible page") << "renew" << true << "vpn-demo1" << true;
        QTest::newRow("late answer after leaving the page") << "buy" << false << "" << true;
        QTest::newRow("purchase page, visible") << "purchase" << true << "" << true;
        QTest::newRow("unverified service") << "renew" << true << "" << false;
    }
    void linkAnswer()
    {
        QFETCH(QString, button);
        QFETCH(bool, visibleAtAnswer);
        QFETCH(QString, loginSent);
        QFETCH(bool, trusted);
        signIn();
        AccountWindow account;
        SubscriptionPurchaseWindow purchase;
        QWidget* page = button == QLatin1String("purchase") ? static_cast<QWidget*>(&purchase) : &account;
        page->show();
        QVERIFY(QTest::qWaitForWindowExposed(page));
        QPushButton* pressed = button == QLatin1String("renew") ? account.renewButton()
            : button == QLatin1String("buy")                    ? account.buyButton()
                                                                : purchase.buyButton();
        m_service.setDelay(300);
        if (!trusted) {
            m_service.setCertificate(FakeCertificates::Kind::OtherHost);
            CustomMessageBox::setNextAnswer(QMessageBox::Ok);
        }
        QSignalSpy answered(NetworkManager::instance(), &NetworkManager::gotBuyLink);
        QSignalSpy failed(NetworkManager::instance(), &NetworkManager::buyLinkFailed);
        QTest::mouseClick(pressed, Qt::LeftButton);
        QVERIFY(!pressed->isEnabled());
        QTest::mouseClick(pressed, Qt::LeftButton);
        if (!visibleAtAnswer)
            page->hide();
        QTRY_COMPARE_WITH_TIMEOUT(answered.count() + failed.count(), 1, 20000);
        QCOMPARE(failed.count(), trusted ? 0 : 1);
        QVERIFY(pressed->isEnabled());
        QCOMPARE(m_opened,
                 trusted && visibleAtAnswer ? QVector<QUrl> {QUrl(QStringLiteral("https://velmora.com/buy"))}
                                            : QVector<QUrl>());
        QCOMPARE(CustomMessageBox::answeredMessages().size(), trusted ? 0 : 1);
        QVERIFY(trusted
                || CustomMessageBox::answeredMessages().first().text == CustomMessageBox::unverifiedServiceText());
        QStringList buyLogins;
        for (const QUrl& url : m_service.requests()) {
            const QUrlQuery query(url);
            if (query.queryItemValue(QStringLiteral("act")) == QLatin1String("buy"))
                buyLogins << query.queryItemValue(QStringLiteral("loginvpn"));
        }
        QCOMPARE(buyLogins, trusted ? QStringList {loginSent} : QStringList());
        QVERIFY(trusted || m_service.requestCount() == 0);
    }

    // With no browser to be found, the link is shown in a message to be copied from.
    void linkWithoutBrowser()
    {
        const QByteArray path = qgetenv("PATH");
        QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
        qputenv("PATH", "/nonexistent");
        CustomMessageBox::setNextAnswer(QMessageBox::Ok);
        CustomMessageBox::openLink(nullptr, QStringLiteral("https://velmora.com/buy"));
        qputenv("PATH", path);
        QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "openUrl");
        QVERIFY(CustomMessageBox::answeredMessages().value(0).text.endsWith(QLatin1String("https://velmora.com/buy")));

        // While the kill switch blocks the Internet no browser is asked: the message says why, with the link.
        CustomMessageBox::setInternetBlocked(true);
        CustomMessageBox::setNextAnswer(QMessageBox::Ok);
        CustomMessageBox::openLink(nullptr, QStringLiteral("https://velmora.com/buy"));
        CustomMessageBox::setInternetBlocked(false);
        QCOMPARE(CustomMessageBox::answeredMessages().size(), 2);
        QVERIFY(CustomMessageBox::answeredMessages().at(1).text.contains(QLatin1String("kill switch")));
        QVERIFY(!m_opened.contains(QUrl(QStringLiteral("https://velmora.com/buy"))));
    }

private:
    // Signs in and picks the VPN login the pages show.
    void signIn(const QString& vpnLogin = QStringLiteral("vpn-demo1"))
    {
        NetworkManager::resetInstance();
        QCOMPARE(signInAndWait(NetworkManager::instance()), int(NetworkManager::Success));
        m_service.reset();
        LocalSettings::instance()->setValue(Keys::VpnLogin, vpnLogin);
    }

    FakeService m_service;
    QVector<QUrl> m_opened;
};

TAVRIN_PAGE_TEST_MAIN(TestAccountPages)
#include "tst_AccountPages.moc"
