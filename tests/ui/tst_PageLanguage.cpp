#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

#include "AccountWindow.h"
#include "LocalSettings.h"
#include "LoginWindow.h"
#include "PageTestEnvironment.h"
#include "SelectionAccountWindow.h"
#include "ServerListWindow.h"
#include "SettingsWindow.h"
#include "SubscriptionPurchaseWindow.h"

// Picking a language on the settings page re-translates every open page at once.
class TestPageLanguage : public QObject
{
    Q_OBJECT

private slots:
    void switchTranslatesEveryPage_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("signIn");
        QTest::newRow("German") << "de"
                                << "Anmelden";
        QTest::newRow("Russian") << "ru"
                                 << "Войти";
        QTest::newRow("Japanese") << "ja"
                                  << "ログイン";
    }
    void switchTranslatesEveryPage()
    {
        QFETCH(QString, code);
        QFETCH(QString, signIn);
        LocalSettings::instance()->setValue(Keys::Language, QStringLiteral("en"));
        SettingsWindow settings;
        settings.loadSettings({OpenVpnTcp});
        LoginWindow login;
        SelectionAccountWindow selection;
        ServerListWindow servers;
        AccountWindow account;
        SubscriptionPurchaseWindow purchase;

        // One text of each page, with its context and English source.
        struct Probe
        {
            std::function<QString()> shown;
            const char* context;
            const char* source;
        };
        const QVector<Probe> probes {
            {[&] { return login.signInButton()->text(); }, "LoginWindow", "Login"},
            {[&] { return selection.continueButton()->text(); }, "SelectionAccountWindow", "Continue"},
            {[&] { return servers.filterButton(ServerListWindow::FavoritesFilter)->text(); },
             "ServerListWindow",
             "Favorites"},
            {[&] { return settings.launchOnStart()->text(); }, "SettingsWindow", "Launch on startup"},
            {[&] { return account.logOutButton()->text(); }, "AccountWindow", "Log out"},
            {[&] { return purchase.buyButton()->text(); },
             "SubscriptionPurchaseWindow",
             "Buy VPN subscription on the site"},
        };
        for (const Probe& probe : probes)
            QCOMPARE(probe.shown(), QString::fromUtf8(probe.source));

        settings.languageBox()->setCurrentIndex(settings.languageBox()->findData(code));
        // The other pages hear of it through a posted language-change event.
        QTRY_COMPARE(login.signInButton()->text(), signIn);
        for (const Probe& probe : probes) {
            const QString translated = QCoreApplication::translate(probe.context, probe.source);
            QVERIFY2(translated != QString::fromUtf8(probe.source), probe.source);
            QCOMPARE(probe.shown(), translated);
        }

        // And back to English.
        settings.languageBox()->setCurrentIndex(settings.languageBox()->findData(QStringLiteral("en")));
        QTRY_COMPARE(login.signInButton()->text(), QStringLiteral("Login"));
        for (const Probe& probe : probes)
            QCOMPARE(probe.shown(), QString::fromUtf8(probe.source));
    }
};

TAVRIN_PAGE_TEST_MAIN(TestPageLanguage)
#include "tst_PageLanguage.moc"
