#include <QAction>
#include <QImageReader>
#include <QMenu>
#include <QPushButton>
#include <QtTest>

#include "FlagPicture.h"
#include "ProgressDlg.h"
#include "ShowLog.h"
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
    QStringList shown;
    for (const QAction* action : tray.contextMenu()->actions().mid(2, 3))
        shown << action->text() + (action->isEnabled() ? "+" : "-");
    return shown.join(QStringLiteral(", "));
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

// The small widgets the pages share, and the tray.
class TestCommonWidgets : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_tray.reset(new RecordingTray);
        m_tray->init();
    }

    // Each entry raises its own signal, and only that one.
    void trayMenu()
    {
        QList<int> fired;
        int signal = 0;
        for (auto clicked : {&SystemTray::clickShow,
                             &SystemTray::clickConnect,
                             &SystemTray::clickReconnect,
                             &SystemTray::clickDisconnect,
                             &SystemTray::clickExit})
            connect(m_tray.data(), clicked, this, [&fired, index = signal++] { fired << index; });
        // The entries' texts and places are read through the panel in tst_WholeProgram.
        for (QAction* action : m_tray->contextMenu()->actions())
            action->trigger();
        QCOMPARE(fired, (QList<int> {0, 1, 2, 3, 4}));
    }

    // The program only ever takes the user's actions away (signing in, signed out, downloading an update).
    void trayStatus_data()
    {
        QTest::addColumn<int>("before");
        QTest::addColumn<int>("call");
        QTest::addColumn<bool>("userActions");
        QTest::addColumn<QString>("entries");
        QTest::addColumn<QString>("icon");
        QTest::addColumn<QString>("balloon");
        QTest::newRow("fresh tray has no server name and no balloon")
            << -1 << -1 << true << "Connect +, Reconnect-, Disconnect-" << LightEye << QString();
        QTest::newRow("disconnected with notice")
            << 2 << 0 << true << "Connect Berlin+, Reconnect-, Disconnect-" << LightEye
            << "Your connection is not secured now!|Connected to Paris|2";
        QTest::newRow("connecting keeps the icon and never pops a balloon")
            << 2 << 1 << true << "Connecting to Berlin-, Reconnect-, Disconnect-" << DarkEye << QString();
        const QString connected = QStringLiteral("Your connection is encrypted and secured now!|Connecting to Paris|1");
        QTest::newRow("connected with notice")
            << 1 << 2 << true << "Connected to Berlin-, Reconnect+, Disconnect+" << DarkEye << connected;
        QTest::newRow("no user actions while disconnected")
            << -1 << -1 << false << "Connect -, Reconnect-, Disconnect-" << LightEye << QString();
        QTest::newRow("no user actions while connected")
            << 1 << 2 << false << "Connected to Berlin-, Reconnect-, Disconnect-" << DarkEye << connected;
    }

    void trayStatus()
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
        QFETCH(bool, userActions);
        if (!userActions)
            m_tray->setEnableUserActions(false);
        QTEST(entries(*m_tray), "entries");
        QCOMPARE(m_tray->currentStatus(), qMax(call, 0));
        QTEST(m_tray->iconPath(), "icon");
        // The balloon comes first, while the menu still shows the previous state.
        QCOMPARE(m_tray->balloons, balloon.isEmpty() ? QStringList() : QStringList {balloon});
    }

    void logLine_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("shown");
        QTest::newRow("line breaks are removed") << QStringLiteral("1,I,first\r\nsecond\n") << "firstsecond";
        QTest::newRow("markup is shown as written") << QStringLiteral("1,W,<ca> & x") << "<ca> & x";
        QTest::newRow("the message keeps its commas")
            << QStringLiteral("1,,PUSH: Received control message: 'PUSH_REPLY,route 10.8.0.1,topology net30'")
            << "PUSH: Received control message: 'PUSH_REPLY,route 10.8.0.1,topology net30'";
    }

    void logLine()
    {
        QFETCH(QString, line);
        QFETCH(QString, shown);
        ShowLog log;
        log.onUpdateLog(line);
        log.onUpdateLog(line);
        QCOMPARE(log.plainText(), shown + QLatin1Char('\n') + shown);
        log.clear();
        QVERIFY(log.plainText().isEmpty());
    }

    void progress()
    {
        ProgressDlg dialog;
        dialog.show();
        dialog.setProgress(1.0f);
        QCOMPARE(dialog.value(), 100);
        QSignalSpy cancel(&dialog, &ProgressDlg::cancel);
        QTest::mouseClick(dialog.findChild<QPushButton*>(), Qt::LeftButton);
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QCOMPARE(cancel.count(), 2);
        // The owner decides when the dialog goes away.
        QVERIFY(dialog.isVisible());
    }

    // Every picture the interface names must resolve in the built binary, as a picture, not just a file.
    void namedPicture_data()
    {
        QTest::addColumn<QString>("path");
        const QString names = QStringLiteral(
            "tvn.ico logo.png rotator-orange.png connect-green.svg connect-orange.svg connect-red.svg "
            "shield-green.svg shield-grey.svg location-blue.svg location-info.svg eye-gray-light.svg "
            "eye-gray-dark.svg search.svg delete.svg question-sign-in-circles.svg "
            "attention-sign-in-circles.svg star-empty-black.svg recommended-black.svg flag-placeholder.svg "
            "user.svg key.svg close.svg minimize.svg");
        for (const QString& name : names.split(QLatin1Char(' ')))
            QTest::newRow(qPrintable(name)) << QStringLiteral(":/resources/") + name;
        QTest::newRow("tray icon") << QStringLiteral(":/MainWindow/Images/vpnlogo.ico");
    }

    void namedPicture()
    {
        QFETCH(QString, path);
        QImageReader reader(path);
        const QImage image = reader.read();
        QVERIFY2(!image.isNull(), qPrintable(reader.errorString()));
        QVERIFY(image.width() >= 11 && image.height() >= 11);
    }

    void flags_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<bool>("hasFlag");
        QTest::newRow("upper-case code from the server list") << "US" << true;
        QTest::newRow("code with blanks") << " fr " << true;
        QTest::newRow("empty code gets the placeholder") << "" << false;
        QTest::newRow("package's named pictures are not codes") << "england" << false;
    }

    void flags()
    {
        QFETCH(QString, code);
        QFETCH(bool, hasFlag);
        QCOMPARE(FlagPicture::exists(code), hasFlag);
        QCOMPARE(FlagPicture::pixmap(code).size(), QSize(FlagPicture::Width, FlagPicture::Height));
    }

private:
    QScopedPointer<RecordingTray> m_tray;
};

QTEST_MAIN(TestCommonWidgets)
#include "tst_CommonWidgets.moc"
