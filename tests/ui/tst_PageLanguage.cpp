#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

#include <memory>

#include "AccountWindow.h"
#include "ConnectWindow.h"
#include "CustomMessageBox.h"
#include "FakeHelperDaemon.h"
#include "FakeService.h"
#include "LocalSettings.h"
#include "LoginWindow.h"
#include "MainWindow.h"
#include "NetworkManager.h"
#include "SearchEdit.h"
#include "SelectionAccountWindow.h"
#include "ServerListWindow.h"
#include "SettingsWindow.h"
#include "SubscriptionPurchaseWindow.h"
#include "SystemTray.h"
#include "TestEnvironment.h"

namespace {

// One translatable text of the program, as the English catalogue lists it.
struct Source
{
    QByteArray context;
    QString text;
};

QVector<Source> englishSources()
{
    QVector<Source> sources;
    QXmlStreamReader xml(readFile(QStringLiteral(TRANSLATIONS_DIR "/TavrinApp_en.ts")));
    QByteArray context;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("name"))
            context = xml.readElementText().toUtf8();
        else if (xml.name() == QLatin1String("source"))
            sources.append({context, xml.readElementText()});
    }
    return sources;
}

// A text with its %1.. filled in by anything.
QRegularExpression patternOf(const QString& text)
{
    QStringList parts = text.split(QRegularExpression(QStringLiteral("%\\d")));
    for (QString& part : parts)
        part = QRegularExpression::escape(part);
    return QRegularExpression(QRegularExpression::anchoredPattern(parts.join(QStringLiteral(".*"))),
                              QRegularExpression::DotMatchesEverythingOption);
}

QString translated(const QTranslator& translator, const Source& source)
{
    const QString text = translator.translate(source.context.constData(), source.text.toUtf8().constData());
    return text.isEmpty() ? source.text : text;
}

void addActions(QStringList* texts, const QList<QAction*>& actions)
{
    for (const QAction* action : actions)
        *texts << action->text() << action->toolTip();
}

// Every text a person can read on the widget and on those of its children that show with it.
QStringList shownTexts(QWidget* root)
{
    QStringList texts {root->windowTitle(), root->toolTip()};
    addActions(&texts, root->actions());
    for (QWidget* widget : root->findChildren<QWidget*>()) {
        if (!widget->isVisibleTo(root))
            continue;
        texts << widget->toolTip();
        addActions(&texts, widget->actions());
        if (auto* label = qobject_cast<QLabel*>(widget))
            texts << label->text();
        if (auto* button = qobject_cast<QAbstractButton*>(widget))
            texts << button->text();
        if (auto* edit = qobject_cast<QLineEdit*>(widget))
            texts << edit->placeholderText();
        if (auto* box = qobject_cast<QComboBox*>(widget)) {
            for (int i = 0; i < box->count(); ++i)
                texts << box->itemText(i);
        }
    }
    texts.removeAll(QString());
    return texts;
}

const char* const languageCodes[]
    = {"ar", "de", "es", "fr", "hi", "it", "ja", "ko", "pl", "pt", "ru", "tr", "uk", "vi", "zh_CN"};

} // namespace

// After a language is picked on the settings page, no page shows a text of the language it had before.
class TestPageLanguage : public QObject
{
    Q_OBJECT

private:
    FakeService m_service;
    std::unique_ptr<FakeHelperDaemon> m_daemon;
    std::unique_ptr<MainWindow> m_window;
    QVector<Source> m_sources;

    // The texts that render a catalogue entry in the language left behind (or in English) while the language
    // now shown renders it differently.
    QStringList
    staleTexts(const QString& where, const QStringList& texts, const QTranslator& now, const QTranslator& before) const
    {
        QStringList stale;
        for (const Source& source : m_sources) {
            const QString expected = translated(now, source);
            const QRegularExpression expectedPattern = patternOf(expected);
            for (const QString& old : {source.text, translated(before, source)}) {
                if (old == expected)
                    continue;
                const QRegularExpression oldPattern = patternOf(old);
                for (const QString& text : texts) {
                    if (oldPattern.match(text).hasMatch() && !expectedPattern.match(text).hasMatch())
                        stale << QStringLiteral("%1: \"%2\" (%3 \"%4\", expected \"%5\")")
                                     .arg(where, text, QString::fromUtf8(source.context), source.text, expected);
                }
            }
        }
        return stale;
    }

    void selectLanguage(const QString& code)
    {
        m_window->onSettings();
        QVERIFY(m_window->settingsPage()->isVisible());
        QComboBox* box = m_window->settingsPage()->languageBox();
        box->setCurrentIndex(box->findData(code));
        // The other pages hear of it through a posted language-change event.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LanguageChange);
        QCoreApplication::processEvents();
    }

private slots:
    void initTestCase()
    {
        m_sources = englishSources();
        QVERIFY(m_sources.size() > 50);
        useFakeService(m_service);
        m_service.setFixture(FakeFixture::demo());
        m_service.fixture().upgradeVersion.clear();
        // Close to the expiry, so that the connect page shows its notice.
        for (FakeLogin& login : m_service.fixture().logins)
            login.exp = QDateTime::currentSecsSinceEpoch() + 3 * 24 * 3600;
        m_daemon.reset(new FakeHelperDaemon);
        QVERIFY(m_daemon->start());
        LocalSettings::instance()->createDefaultSettings();
        LocalSettings::instance()->setValue(Keys::Language, QStringLiteral("en"));

        m_window.reset(new MainWindow);
        m_window->checkAutologin();
        QSignalSpy auth(NetworkManager::instance(), &NetworkManager::auth);
        m_window->onSignIn(QStringLiteral("demo"), QStringLiteral("demo"));
        QVERIFY(auth.wait(20000));
        QCOMPARE(auth.at(0).at(0).toInt(), int(NetworkManager::Success));
        m_window->selectionPage()->buttons().at(0)->setChecked(true);
        m_window->selectionPage()->onContinueClicked();
        QVERIFY(!m_window->connectPage()->getServers().isEmpty());
        // Picked without connecting, as a remembered location comes up after a start.
        m_window->connectPage()->onServerChanged(m_window->connectPage()->getServers().firstKey());
    }

    void everyPageFollowsTheLanguage_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("before");
        QTest::addColumn<bool>("connected");
        for (const char* code : languageCodes)
            QTest::addRow("%s, idle", code) << QString::fromLatin1(code) << QStringLiteral("en") << false;
        QTest::newRow("ru, connected") << QStringLiteral("ru") << QStringLiteral("en") << true;
        QTest::newRow("back to English from Chinese, connected")
            << QStringLiteral("en") << QStringLiteral("zh_CN") << true;
    }
    void everyPageFollowsTheLanguage()
    {
        QFETCH(QString, code);
        QFETCH(QString, before);
        QFETCH(bool, connected);
        QTranslator now;
        QTranslator previous;
        QVERIFY(now.load(QStringLiteral(":/translations/TavrinApp_%1").arg(code)));
        QVERIFY(previous.load(QStringLiteral(":/translations/TavrinApp_%1").arg(before)));
        QStringList stale;

        // Every page has been shown, and its texts made, in the language left behind.
        selectLanguage(before);
        m_window->onBack();
        ConnectWindow* connect = m_window->connectPage();
        const QString server = connect->currentServer().name;
        QVERIFY(!server.isEmpty());
        if (connected) {
            connect->setUiState(ConnectWindow::Connecting);
            connect->controller().onConnected();
        }
        m_window->onAccount();
        m_window->onBack();
        m_window->onServerList(OpenVpnUdp);
        m_window->onBack();
        QCOMPARE(connect->isConnected(), connected);

        selectLanguage(code);
        QCOMPARE(m_window->layoutDirection(), code == QLatin1String("ar") ? Qt::RightToLeft : Qt::LeftToRight);
        stale << staleTexts(QStringLiteral("settings page"), shownTexts(m_window->settingsPage()), now, previous);
        QTest::mouseClick(m_window->settingsPage()->backButton(), Qt::LeftButton);
        QVERIFY(connect->isVisible());
        QVERIFY(connect->findChild<QLabel*>(QStringLiteral("lbSubscribtionInfo"))->isVisible());
        stale << staleTexts(QStringLiteral("connect page"), shownTexts(m_window.get()), now, previous);
        QStringList tray;
        addActions(&tray, m_window->tray()->contextMenu()->actions());
        QVERIFY(tray.join(QLatin1Char(' ')).contains(server));
        stale << staleTexts(QStringLiteral("tray menu"), tray, now, previous);

        m_window->onAccount();
        stale << staleTexts(QStringLiteral("account page"), shownTexts(m_window->accountPage()), now, previous);
        m_window->onBack();

        m_window->onServerList(OpenVpnUdp);
        ServerListWindow* list = m_window->serverListPage();
        stale << staleTexts(QStringLiteral("server list"), shownTexts(list), now, previous);
        // Searching shows the search field and, for a name nobody has, the empty-list note.
        QTest::mouseClick(list->filterButton(ServerListWindow::SearchFilter), Qt::LeftButton);
        QTest::keyClicks(list->searchEdit(), QStringLiteral("zzzz"));
        stale << staleTexts(QStringLiteral("server list search"), shownTexts(list), now, previous);
        m_window->onBack();

        // The pages of the signed-out side are reached through a sign-out; their texts are there already.
        for (QWidget* page : QWidgetList {m_window->loginPage(), m_window->selectionPage(), m_window->purchasePage()})
            stale << staleTexts(page->objectName(), shownTexts(page), now, previous);
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (qobject_cast<QDialog*>(window) || window->inherits("ShowLog"))
                stale << staleTexts(window->metaObject()->className(), shownTexts(window), now, previous);
        }

        // Message boxes: the program's own buttons, and two messages made at the moment they show.
        const auto buttons = QMessageBox::Yes | QMessageBox::No | QMessageBox::Ok | QMessageBox::Cancel;
        const auto box = CustomMessageBox::create(CustomMessageBox::Kind::Question, nullptr, {}, "?", buttons, {});
        stale << staleTexts(QStringLiteral("message box"), shownTexts(box.get()), now, previous);
        CustomMessageBox::clearAnswers();
        CustomMessageBox::setNextAnswer(QMessageBox::No);
        m_window->onReturnToSignUp();
        CustomMessageBox::setNextAnswer(QMessageBox::Ok);
        m_window->loginPage()->clear();
        m_window->loginPage()->onSignIn();
        QStringList messages;
        for (const CustomMessageBox::Message& message : CustomMessageBox::answeredMessages())
            messages << message.title << message.text;
        QCOMPARE(messages.size(), 4);
        stale << staleTexts(QStringLiteral("messages"), messages, now, previous);

        stale.removeDuplicates();
        QVERIFY2(stale.isEmpty(), qPrintable(stale.join(QLatin1Char('\n'))));
    }
    void cleanup()
    {
        ConnectWindow* connect = m_window->connectPage();
        if (connect->isConnected()) {
            connect->controller().onDisconnected();
            connect->setUiState(ConnectWindow::Idle);
        }
    }
};

TAVRIN_PAGE_TEST_MAIN(TestPageLanguage)
#include "tst_PageLanguage.moc"
