#include <QAction>
#include <QMenu>
#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QtTest>
#include <memory>
#include <vector>

#include "SystemTray.h"

namespace {

// Records each balloon together with the connect action's text at that moment.
class RecordingTray : public SystemTray
{
public:
    struct Balloon
    {
        QString text;
        QString connectTextThen;
        int statusThen;
    };
    QVector<Balloon> balloons;

protected:
    void showBalloon(const QString& text) override
    {
        balloons.append({text, contextMenu()->actions().at(2)->text(), currentStatus()});
    }
};

enum class Call { Disconnected, Connecting, Connected };

QAction* actionAt(const SystemTray& tray, int index)
{
    return tray.contextMenu()->actions().at(index);
}

void apply(SystemTray& tray, Call call, bool notify)
{
    switch (call) {
    case Call::Disconnected:
        tray.setStatusDisconnected(notify);
        break;
    case Call::Connecting:
        tray.setStatusConnecting(notify);
        break;
    case Call::Connected:
        tray.setStatusConnected(notify);
        break;
    }
}

const QString LightEye = QStringLiteral(":/resources/eye-gray-light.svg");
const QString DarkEye = QStringLiteral(":/resources/eye-gray-dark.svg");

} // namespace

Q_DECLARE_METATYPE(Call)

class TestSystemTray : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_tray.reset(new RecordingTray); }
    void cleanup() { m_tray.reset(); }

    void initialState()
    {
        m_tray->init();
        QCOMPARE(actionAt(*m_tray, 2)->text(), QStringLiteral("Connect "));
        QCOMPARE(m_tray->iconPath(), LightEye);
        QCOMPARE(m_tray->currentStatus(), 0);
        QVERIFY(m_tray->balloons.isEmpty());
        QVERIFY(m_tray->icon()->isVisible());
    }

    void menuOrder()
    {
        m_tray->init();
        const QList<QAction*> actions = m_tray->contextMenu()->actions();
        QCOMPARE(actions.size(), 7);
        QCOMPARE(actions.at(0)->text(), QStringLiteral("Tavrin"));
        QVERIFY(actions.at(1)->isSeparator());
        QCOMPARE(actions.at(3)->text(), QStringLiteral("Reconnect"));
        QCOMPARE(actions.at(4)->text(), QStringLiteral("Disconnect"));
        QVERIFY(actions.at(5)->isSeparator());
        QCOMPARE(actions.at(6)->text(), QStringLiteral("Quit"));
        QCOMPARE(m_tray->icon()->contextMenu(), m_tray->contextMenu());
    }

    void clickSignals_data()
    {
        QTest::addColumn<int>("actionIndex");
        QTest::addColumn<int>("signalIndex");
        QTest::newRow("show action shows the window") << 0 << 0;
        QTest::newRow("connect action connects") << 2 << 1;
        QTest::newRow("reconnect action reconnects") << 3 << 2;
        QTest::newRow("disconnect action disconnects") << 4 << 3;
        QTest::newRow("quit action exits") << 6 << 4;
    }

    void clickSignals()
    {
        QFETCH(int, actionIndex);
        QFETCH(int, signalIndex);
        m_tray->init();
        using Signal = void (SystemTray::*)();
        const Signal all[] = {&SystemTray::clickShow,
                              &SystemTray::clickConnect,
                              &SystemTray::clickReconnect,
                              &SystemTray::clickDisconnect,
                              &SystemTray::clickExit};
        std::vector<std::unique_ptr<QSignalSpy>> spies;
        for (Signal signal : all)
            spies.push_back(std::make_unique<QSignalSpy>(m_tray.data(), signal));
        actionAt(*m_tray, actionIndex)->trigger();
        for (int i = 0; i < int(spies.size()); ++i)
            QCOMPARE(spies.at(i)->count(), i == signalIndex ? 1 : 0);
    }

    void statusTable_data()
    {
        QTest::addColumn<Call>("before");
        QTest::addColumn<Call>("call");
        QTest::addColumn<bool>("notify");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("connectOn");
        QTest::addColumn<bool>("reconnectOn");
        QTest::addColumn<bool>("disconnectOn");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("icon");
        QTest::addColumn<QString>("balloon");

        const QString notSecured = QStringLiteral("Your connection is not secured now!");
        const QString secured = QStringLiteral("Your connection is encrypted and secured now!");
        QTest::newRow("disconnected quietly") << Call::Connected << Call::Disconnected << false << "Connect Paris"
                                              << true << false << false << 0 << LightEye << QString();
        QTest::newRow("disconnected with notice") << Call::Connected << Call::Disconnected << true << "Connect Paris"
                                                  << true << false << false << 0 << LightEye << notSecured;
        QTest::newRow("connecting from connected keeps the dark eye")
            << Call::Connected << Call::Connecting << false << "Connecting to Paris" << false << false << false << 1
            << DarkEye << QString();
        QTest::newRow("connecting never pops a balloon")
            << Call::Disconnected << Call::Connecting << true << "Connecting to Paris" << false << false << false << 1
            << LightEye << QString();
        QTest::newRow("connected quietly") << Call::Connecting << Call::Connected << false << "Connected to Paris"
                                           << false << true << true << 2 << DarkEye << QString();
        QTest::newRow("connected with notice") << Call::Connecting << Call::Connected << true << "Connected to Paris"
                                               << false << true << true << 2 << DarkEye << secured;
        QTest::newRow("connected twice without guard")
            << Call::Connected << Call::Connected << true << "Connected to Paris" << false << true << true << 2
            << DarkEye << secured;
    }

    void statusTable()
    {
        QFETCH(Call, before);
        QFETCH(Call, call);
        QFETCH(bool, notify);
        QFETCH(QString, text);
        QFETCH(bool, connectOn);
        QFETCH(bool, reconnectOn);
        QFETCH(bool, disconnectOn);
        QFETCH(int, status);
        QFETCH(QString, icon);
        QFETCH(QString, balloon);

        m_tray->init();
        m_tray->setActiveServer(QStringLiteral("Paris"));
        apply(*m_tray, before, false);
        const QString textBefore = actionAt(*m_tray, 2)->text();
        const int statusBefore = m_tray->currentStatus();
        m_tray->balloons.clear();

        apply(*m_tray, call, notify);

        QCOMPARE(actionAt(*m_tray, 2)->text(), text);
        QCOMPARE(actionAt(*m_tray, 2)->isEnabled(), connectOn);
        QCOMPARE(actionAt(*m_tray, 3)->isEnabled(), reconnectOn);
        QCOMPARE(actionAt(*m_tray, 4)->isEnabled(), disconnectOn);
        QCOMPARE(m_tray->currentStatus(), status);
        QCOMPARE(m_tray->iconPath(), icon);
        if (balloon.isEmpty()) {
            QVERIFY(m_tray->balloons.isEmpty());
        } else {
            QCOMPARE(m_tray->balloons.size(), 1);
            QCOMPARE(m_tray->balloons.first().text, balloon);
            // The balloon comes first, while the menu still shows the previous state.
            QCOMPARE(m_tray->balloons.first().connectTextThen, textBefore);
            QCOMPARE(m_tray->balloons.first().statusThen, statusBefore);
        }
    }

    void serverNameWaitsForNextStatus()
    {
        m_tray->init();
        m_tray->setActiveServer(QStringLiteral("Paris"));
        m_tray->setStatusConnected(false);
        m_tray->setActiveServer(QStringLiteral("Berlin"));
        QCOMPARE(actionAt(*m_tray, 2)->text(), QStringLiteral("Connected to Paris"));
        m_tray->setStatusConnected(false);
        QCOMPARE(actionAt(*m_tray, 2)->text(), QStringLiteral("Connected to Berlin"));
        m_tray->setActiveServer(QStringLiteral("Oslo"));
        m_tray->retranslate();
        QCOMPARE(actionAt(*m_tray, 2)->text(), QStringLiteral("Connected to Oslo"));
    }

    void userActionsOverrideState_data()
    {
        QTest::addColumn<Call>("state");
        QTest::addColumn<bool>("enable");
        QTest::newRow("enabling while connecting enables all three") << Call::Connecting << true;
        QTest::newRow("disabling while connected disables all three") << Call::Connected << false;
        QTest::newRow("disabling while disconnected disables connect too") << Call::Disconnected << false;
    }

    void userActionsOverrideState()
    {
        QFETCH(Call, state);
        QFETCH(bool, enable);
        m_tray->init();
        apply(*m_tray, state, false);
        m_tray->setEnableUserActions(enable);
        for (int index : {2, 3, 4})
            QCOMPARE(actionAt(*m_tray, index)->isEnabled(), enable);
        QVERIFY(actionAt(*m_tray, 0)->isEnabled());
        QVERIFY(actionAt(*m_tray, 6)->isEnabled());
    }

    void retranslateFollowsLanguage_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("connected");
        QTest::addColumn<QString>("disconnect");
        QTest::newRow("german") << "de"
                                << "Verbunden mit Paris"
                                << "Trennen";
        QTest::newRow("russian") << "ru"
                                 << "Подключено к Paris"
                                 << "Отключиться";
        QTest::newRow("english keeps the source texts") << "en"
                                                        << "Connected to Paris"
                                                        << "Disconnect";
    }

    void retranslateFollowsLanguage()
    {
        QFETCH(QString, language);
        QFETCH(QString, connected);
        QFETCH(QString, disconnect);
        m_tray->init();
        m_tray->setActiveServer(QStringLiteral("Paris"));
        m_tray->setStatusConnected(false);
        QTranslator translator;
        QVERIFY(translator.load(QStringLiteral(":/translations/TavrinApp_%1").arg(language)));
        QCoreApplication::installTranslator(&translator);
        m_tray->retranslate();
        QCoreApplication::removeTranslator(&translator);
        QCOMPARE(actionAt(*m_tray, 2)->text(), connected);
        QCOMPARE(actionAt(*m_tray, 4)->text(), disconnect);
        // The product name is never translated.
        QCOMPARE(actionAt(*m_tray, 0)->text(), QStringLiteral("Tavrin"));
    }

private:
    QScopedPointer<RecordingTray> m_tray;
};

QTEST_MAIN(TestSystemTray)
#include "tst_SystemTray.moc"
