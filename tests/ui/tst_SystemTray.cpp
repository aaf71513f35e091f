#include <QAction>
#include <QMenu>
#include <QtTest>

#include "SystemTray.h"

namespace {

// Records each balloon with the connect action's text and the status at that moment.
class RecordingTray : public SystemTray
{
public:
    QStringList balloons;

protected:
    void showBalloon(const QString& text) override
    {
        balloons << text + QLatin1Char('|') + contextMenu()->actions().at(2)->text() + QLatin1Char('|')
                + QString::number(currentStatus());
    }
};

// The connect, reconnect and disconnect entries, each marked "+" when enabled.
QString entries(const SystemTray& tray)
{
    const QList<QAction*> actions = tray.contextMenu()->actions();
    return QStringList {actions.at(2)->text() + (actions.at(2)->isEnabled() ? "+" : "-"),
                        actions.at(3)->text() + (actions.at(3)->isEnabled() ? "+" : "-"),
                        actions.at(4)->text() + (actions.at(4)->isEnabled() ? "+" : "-")}
        .join(QStringLiteral(", "));
}

// 0 disconnected, 1 connecting, 2 connected; -1 leaves the tray as init() made it.
void apply(SystemTray& tray, int state, bool notify)
{
    if (state == 0)
        tray.setStatusDisconnected(notify);
    else if (state == 1)
        tray.setStatusConnecting(notify);
    else if (state == 2)
        tray.setStatusConnected(notify);
}

const QString LightEye = QStringLiteral(":/resources/eye-gray-light.svg");
const QString DarkEye = QStringLiteral(":/resources/eye-gray-dark.svg");

} // namespace

class TestSystemTray : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_tray.reset(new RecordingTray);
        m_tray->init();
    }

    // Each entry raises its own signal, and only that one.
    void menu()
    {
        QList<int> fired;
        int signal = 0;
        for (auto clicked : {&SystemTray::clickShow,
                             &SystemTray::clickConnect,
                             &SystemTray::clickReconnect,
                             &SystemTray::clickDisconnect,
                             &SystemTray::clickExit})
            connect(m_tray.data(), clicked, this, [&fired, index = signal++] { fired << index; });
        QStringList texts;
        for (QAction* action : m_tray->contextMenu()->actions()) {
            texts << (action->isSeparator() ? QStringLiteral("-") : action->text());
            action->trigger();
        }
        QCOMPARE(texts, (QStringList {"Tavrin", "-", "Connect ", "Reconnect", "Disconnect", "-", "Quit"}));
        QCOMPARE(fired, (QList<int> {0, 1, 2, 3, 4}));
    }

    void statusTable_data()
    {
        QTest::addColumn<int>("before");
        QTest::addColumn<int>("call");
        QTest::addColumn<QString>("entries");
        QTest::addColumn<QString>("icon");
        QTest::addColumn<QString>("balloon");
        QTest::newRow("fresh tray has no server name and no balloon")
            << -1 << -1 << "Connect +, Reconnect-, Disconnect-" << LightEye << QString();
        QTest::newRow("disconnected with notice") << 2 << 0 << "Connect Berlin+, Reconnect-, Disconnect-" << LightEye
                                                  << "Your connection is not secured now!|Connected to Paris|2";
        QTest::newRow("connecting keeps the icon and never pops a balloon")
            << 2 << 1 << "Connecting to Berlin-, Reconnect-, Disconnect-" << DarkEye << QString();
        QTest::newRow("connected with notice") << 1 << 2 << "Connected to Berlin-, Reconnect+, Disconnect+" << DarkEye
                                               << "Your connection is encrypted and secured now!|Connecting to Paris|1";
    }

    void statusTable()
    {
        QFETCH(int, before);
        QFETCH(int, call);
        QFETCH(QString, balloon);
        if (call >= 0)
            m_tray->setActiveServer(QStringLiteral("Paris"));
        apply(*m_tray, before, false);
        // A new server name waits for the next status call.
        if (call >= 0)
            m_tray->setActiveServer(QStringLiteral("Berlin"));
        apply(*m_tray, call, true);
        QTEST(entries(*m_tray), "entries");
        QCOMPARE(m_tray->currentStatus(), qMax(call, 0));
        QTEST(m_tray->iconPath(), "icon");
        // The balloon comes first, while the menu still shows the previous state.
        QCOMPARE(m_tray->balloons, balloon.isEmpty() ? QStringList() : QStringList {balloon});
    }

    void userActionsOverrideState()
    {
        m_tray->setStatusConnecting();
        m_tray->setEnableUserActions(true);
        QCOMPARE(entries(*m_tray), QStringLiteral("Connecting to +, Reconnect+, Disconnect+"));
        m_tray->setStatusDisconnected(false);
        m_tray->setEnableUserActions(false);
        QCOMPARE(entries(*m_tray), QStringLiteral("Connect -, Reconnect-, Disconnect-"));
    }

private:
    QScopedPointer<RecordingTray> m_tray;
};

QTEST_MAIN(TestSystemTray)
#include "tst_SystemTray.moc"
