#include <QDesktopServices>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include "AccountWindow.h"
#include "FakeService.h"
#include "LocalSettings.h"
#include "NetworkManager.h"
#include "PageTestEnvironment.h"
#include "SubscriptionPurchaseWindow.h"

// Signs in against the fake service, then drives the account and purchase pages. Opened links are caught by a
// URL handler, so no browser starts.
class TestAccountPages : public QObject
{
    Q_OBJECT

public slots:
    void openUrl(const QUrl& url) { m_opened.append(url); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_service.start());
        qputenv("TAVRIN_API_URL", m_service.baseUrl().toUtf8());
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

    void loginAndExpiry_data()
    {
        QTest::addColumn<int>("logins");
        QTest::addColumn<QString>("vpnLogin");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<bool>("change");
        QTest::newRow("one login hides Change") << 1 << "vpn-demo1"
                                                << "vpn-demo1" << false;
        QTest::newRow("several logins show Change") << 2 << "vpn-demo2"
                                                    << "vpn-demo2" << true;
    }
    void loginAndExpiry()
    {
        QFETCH(int, logins);
        QFETCH(QString, vpnLogin);
        QFETCH(QString, shown);
        QFETCH(bool, change);
        m_service.fixture().logins.resize(logins);
        // A login with blanks around it is shown without them.
        m_service.fixture().logins.last().user = QStringLiteral(" %1 ").arg(vpnLogin);
        // Servers of logins the account does not have would add those logins to the client's list.
        for (FakeServer& server : m_service.fixture().servers) {
            if (logins == 1)
                server.user = m_service.fixture().logins.first().user;
        }
        signIn();
        LocalSettings::instance()->setValue(Keys::VpnLogin, QStringLiteral(" %1 ").arg(vpnLogin));
        AccountWindow page;
        QSignalSpy changed(&page, &AccountWindow::accountChanged);
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        QCOMPARE(page.loginLabel()->text(), shown);
        const Subscription subscription
            = NetworkManager::instance()->subscription(QStringLiteral(" %1 ").arg(vpnLogin));
        QVERIFY(subscription.expiresTime().isValid());
        QCOMPARE(page.expiresLabel()->text(),
                 QStringLiteral("VPN subscription expires: %1")
                     .arg(subscription.expiresTime().toString(QStringLiteral("dd.MM.yyyy"))));
        QCOMPARE(page.changeButton()->isVisible(), change);
        if (change) {
            QTest::mouseClick(page.changeButton(), Qt::LeftButton);
            QCOMPARE(changed.count(), 1);
        }
    }

    void linkAnswer_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("visibleAtAnswer");
        QTest::addColumn<QString>("loginSent");
        QTest::newRow("renew on the visible page") << "renew" << true << "vpn-demo1";
        QTest::newRow("buy on the visible page") << "buy" << true << "";
        QTest::newRow("late answer after leaving the page") << "buy" << false << "";
        QTest::newRow("purchase page, visible") << "purchase" << true << "";
        QTest::newRow("purchase page, late answer") << "purchase" << false << "";
    }
    void linkAnswer()
    {
        QFETCH(QString, button);
        QFETCH(bool, visibleAtAnswer);
        QFETCH(QString, loginSent);
        signIn();
        LocalSettings::instance()->setValue(Keys::VpnLogin, QStringLiteral("vpn-demo1"));
        AccountWindow account;
        SubscriptionPurchaseWindow purchase;
        QWidget* page = button == QLatin1String("purchase") ? static_cast<QWidget*>(&purchase) : &account;
        page->show();
        QVERIFY(QTest::qWaitForWindowExposed(page));
        QPushButton* pressed = button == QLatin1String("renew") ? account.renewButton()
            : button == QLatin1String("buy")                    ? account.buyButton()
                                                                : purchase.buyButton();
        m_service.setDelay(300);
        QSignalSpy answered(NetworkManager::instance(), &NetworkManager::gotBuyLink);
        QTest::mouseClick(pressed, Qt::LeftButton);
        QVERIFY(!pressed->isEnabled());
        // A second press before the answer does nothing.
        QTest::mouseClick(pressed, Qt::LeftButton);
        if (!visibleAtAnswer)
            page->hide();
        QVERIFY(answered.wait(10000));
        QVERIFY(pressed->isEnabled());
        QCOMPARE(m_opened.size(), visibleAtAnswer ? 1 : 0);
        if (visibleAtAnswer)
            QCOMPARE(m_opened.first(), QUrl(QStringLiteral("https://velmora.com/buy")));

        int buyRequests = 0;
        for (const QUrl& url : m_service.requests()) {
            const QUrlQuery query(url);
            if (query.queryItemValue(QStringLiteral("act")) != QLatin1String("buy"))
                continue;
            ++buyRequests;
            QCOMPARE(query.queryItemValue(QStringLiteral("loginvpn")), loginSent);
        }
        QCOMPARE(buyRequests, 1);
    }

    void pagesSignalLeaving()
    {
        AccountWindow account;
        SubscriptionPurchaseWindow purchase;
        QSignalSpy back(&account, &AccountWindow::back);
        QSignalSpy accountOut(&account, &AccountWindow::returnToSignUp);
        QSignalSpy purchaseOut(&purchase, &SubscriptionPurchaseWindow::returnToSignUp);
        QTest::mouseClick(account.backButton(), Qt::LeftButton);
        QTest::mouseClick(account.logOutButton(), Qt::LeftButton);
        QTest::mouseClick(purchase.logOutButton(), Qt::LeftButton);
        QCOMPARE(back.count(), 1);
        QCOMPARE(accountOut.count(), 1);
        QCOMPARE(purchaseOut.count(), 1);
    }

private:
    void signIn()
    {
        NetworkManager::resetInstance();
        QSignalSpy auth(NetworkManager::instance(), &NetworkManager::auth);
        NetworkManager::instance()->authRequest(QStringLiteral("demo"), QStringLiteral("demo"));
        QVERIFY(auth.wait(10000));
        QCOMPARE(auth.first().first().value<NetworkManager::ApiError>(), NetworkManager::Success);
        m_service.reset();
    }

    FakeService m_service;
    QVector<QUrl> m_opened;
};

TAVRIN_PAGE_TEST_MAIN(TestAccountPages)
#include "tst_AccountPages.moc"
