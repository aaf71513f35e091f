#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTextBrowser>
#include <QToolButton>
#include <QtTest>

#include "CustomMessageBox.h"
#include "MovableWidget.h"
#include "ProgressDlg.h"
#include "RotateWidget.h"
#include "SearchEdit.h"
#include "ShowLog.h"

Q_DECLARE_METATYPE(CustomMessageBox::Kind)
Q_DECLARE_METATYPE(Qt::MouseButton)

class TestCommonWidgets : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { CustomMessageBox::clearAnswers(); }

    void logLine_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("shown");
        QTest::newRow("time and flags are dropped") << "1678000000,I,Initialization Sequence Completed"
                                                    << "Initialization Sequence Completed";
        QTest::newRow("commas inside the message vanish") << "1678000000,I,a,b"
                                                          << "ab";
        QTest::newRow("two parts are joined, not cut") << "a,b"
                                                       << "ab";
        QTest::newRow("line without commas stays") << "plain message"
                                                   << "plain message";
        QTest::newRow("line breaks are removed") << "1,I,first\r\nsecond\n"
                                                 << "firstsecond";
        QTest::newRow("empty parts are kept and dropped by position") << ",,message"
                                                                      << "message";
        QTest::newRow("markup is shown as written") << "1,W,<ca> & [AF_INET]10.0.0.1"
                                                    << "<ca> & [AF_INET]10.0.0.1";
    }

    void logLine()
    {
        QFETCH(QString, line);
        QFETCH(QString, shown);
        ShowLog log;
        log.onUpdateLog(line);
        QCOMPARE(log.plainText(), shown);
    }

    void logAppendsParagraphsAndClears()
    {
        ShowLog log;
        QTRY_COMPARE(log.windowTitle(), QStringLiteral("Connection Details"));
        log.onUpdateLog(QStringLiteral("1,I,one"));
        log.onUpdateLog(QStringLiteral("2,I,two"));
        QTextBrowser* browser = log.findChild<QTextBrowser*>();
        QVERIFY(browser);
        QVERIFY(browser->isReadOnly());
        QCOMPARE(browser->document()->blockCount(), 2);
        QCOMPARE(log.plainText(), QStringLiteral("one\ntwo"));
        log.clear();
        QVERIFY(log.plainText().isEmpty());
    }

    void progressFraction_data()
    {
        QTest::addColumn<float>("fraction");
        QTest::addColumn<int>("shown");
        QTest::newRow("nothing yet") << 0.0f << 0;
        QTest::newRow("half") << 0.5f << 50;
        QTest::newRow("almost done is truncated, not rounded") << 0.999f << 99;
        QTest::newRow("complete") << 1.0f << 100;
    }

    void progressFraction()
    {
        QFETCH(float, fraction);
        QFETCH(int, shown);
        ProgressDlg dialog;
        dialog.setProgress(fraction);
        QCOMPARE(dialog.value(), shown);
        QCOMPARE(dialog.findChild<QProgressBar*>()->maximum(), 100);
    }

    void progressTexts()
    {
        ProgressDlg dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Update"));
        QVERIFY(dialog.findChild<QLabel*>()->text() == QStringLiteral("Downloading update. Please wait..."));
        QCOMPARE(dialog.findChild<QPushButton*>()->text(), QStringLiteral("Cancel"));
    }

    void languageChangeRetitles()
    {
        ShowLog log;
        ProgressDlg dialog;
        SearchEdit edit;
        QTranslator translator;
        QVERIFY(translator.load(QStringLiteral(":/translations/TavrinApp_de")));
        QCoreApplication::installTranslator(&translator);
        QTRY_COMPARE(log.windowTitle(), QStringLiteral("Verbindungsdetails"));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Aktualisierung"));
        QCOMPARE(dialog.findChild<QPushButton*>()->text(), QStringLiteral("Abbrechen"));
        QCOMPARE(edit.placeholderText(), QStringLiteral("Standort"));
        QCoreApplication::removeTranslator(&translator);
        QTRY_COMPARE(log.windowTitle(), QStringLiteral("Connection Details"));
    }

    void progressCancels()
    {
        ProgressDlg dialog;
        dialog.show();
        QSignalSpy cancel(&dialog, &ProgressDlg::cancel);
        QTest::mouseClick(dialog.findChild<QPushButton*>(), Qt::LeftButton);
        QCOMPARE(cancel.count(), 1);
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QCOMPARE(cancel.count(), 2);
        // The owner decides when the dialog goes away.
        QVERIFY(dialog.isVisible());
    }

    void spinnerStartsAndStops()
    {
        RotateWidget spinner(QStringLiteral(":/resources/rotator-orange.png"));
        QCOMPARE(spinner.size(), QPixmap(QStringLiteral(":/resources/rotator-orange.png")).size());
        QVERIFY(!spinner.size().isEmpty());
        QCOMPARE(spinner.angle(), 0);
        QVERIFY(!spinner.isRunning());
        spinner.start();
        QVERIFY(spinner.isRunning());
        QTRY_VERIFY(spinner.angle() >= 10);
        QCOMPARE(spinner.angle() % RotateWidget::StepDegrees, 0);
        spinner.stop();
        QVERIFY(!spinner.isRunning());
        const int stoppedAt = spinner.angle();
        QTest::qWait(50);
        QCOMPARE(spinner.angle(), stoppedAt);
    }

    void titleBar()
    {
        MovableWidget bar;
        QCOMPARE(bar.title(), QStringLiteral("Tavrin 3.6.9"));
        QSignalSpy closed(&bar, &MovableWidget::closeClick);
        QSignalSpy hidden(&bar, &MovableWidget::hideClick);
        QTest::mouseClick(bar.findChild<QPushButton*>(QStringLiteral("pbClose")), Qt::LeftButton);
        QTest::mouseClick(bar.findChild<QPushButton*>(QStringLiteral("pbHide")), Qt::LeftButton);
        QCOMPARE(closed.count(), 1);
        QCOMPARE(hidden.count(), 1);
    }

    void dragMovesWindow_data()
    {
        QTest::addColumn<Qt::MouseButton>("button");
        QTest::addColumn<bool>("moves");
        QTest::newRow("left button drags") << Qt::LeftButton << true;
        QTest::newRow("right button moves nothing") << Qt::RightButton << false;
    }

    void dragMovesWindow()
    {
        QFETCH(Qt::MouseButton, button);
        QFETCH(bool, moves);
        QWidget window;
        window.resize(340, 500);
        auto* bar = new MovableWidget(&window);
        bar->setGeometry(0, 0, 340, 30);
        bar->setMovingWindow(&window);
        window.move(100, 100);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QPoint before = window.frameGeometry().topLeft();

        const QPoint start(50, 10);
        QMouseEvent press(QEvent::MouseButtonPress, start, bar->mapToGlobal(start), button, button, Qt::NoModifier);
        QApplication::sendEvent(bar, &press);
        const QPoint end = start + QPoint(40, 25);
        QMouseEvent move(QEvent::MouseMove, end, bar->mapToGlobal(end), Qt::NoButton, button, Qt::NoModifier);
        QApplication::sendEvent(bar, &move);
        QMouseEvent release(
            QEvent::MouseButtonRelease, end, bar->mapToGlobal(end), button, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(bar, &release);

        const QPoint expected = moves ? before + QPoint(40, 25) : before;
        QTRY_COMPARE(window.frameGeometry().topLeft(), expected);
    }

    void searchField()
    {
        SearchEdit edit;
        edit.resize(200, 30);
        edit.show();
        QVERIFY(QTest::qWaitForWindowExposed(&edit));
        QCOMPARE(edit.placeholderText(), QStringLiteral("Location"));
        QToolButton* clear = edit.clearButton();
        QVERIFY(!clear->isVisible());
        QTest::keyClicks(&edit, QStringLiteral("Fra"));
        QVERIFY(clear->isVisible());
        QVERIFY(clear->geometry().right() < edit.width() && clear->geometry().right() > edit.width() - 12);
        edit.resize(300, 30);
        QVERIFY(clear->geometry().right() > 288);
        QTest::mouseClick(clear, Qt::LeftButton);
        QVERIFY(edit.text().isEmpty());
        QVERIFY(!clear->isVisible());
    }

    void messageBoxLook_data()
    {
        QTest::addColumn<CustomMessageBox::Kind>("kind");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("shownTitle");
        QTest::newRow("critical carries the product title") << CustomMessageBox::Kind::Critical << "Tavrin"
                                                            << "Tavrin";
        QTest::newRow("information carries the product title") << CustomMessageBox::Kind::Information << "Tavrin"
                                                               << "Tavrin";
        QTest::newRow("question keeps its own title") << CustomMessageBox::Kind::Question << "Logout"
                                                      << "Logout";
        QTest::newRow("no title falls back to the product") << CustomMessageBox::Kind::Question << ""
                                                            << "Tavrin";
    }

    void messageBoxLook()
    {
        QFETCH(CustomMessageBox::Kind, kind);
        QFETCH(QString, title);
        QFETCH(QString, shownTitle);
        auto box = CustomMessageBox::create(kind,
                                            nullptr,
                                            title,
                                            QStringLiteral("Wrong Login/Password."),
                                            QMessageBox::Yes | QMessageBox::No | QMessageBox::Ok | QMessageBox::Cancel,
                                            QMessageBox::No);
        QCOMPARE(box->windowTitle(), shownTitle);
        QCOMPARE(box->text(), QStringLiteral("Wrong Login/Password."));
        QVERIFY(!box->iconPixmap().isNull());
        QVERIFY(box->styleSheet().contains(QStringLiteral("QMessageBox")));
        QCOMPARE(box->button(QMessageBox::Yes)->text(), QStringLiteral("Yes"));
        QCOMPARE(box->button(QMessageBox::No)->text(), QStringLiteral("No"));
        QCOMPARE(box->button(QMessageBox::Ok)->text(), QStringLiteral("Ok"));
        QCOMPARE(box->button(QMessageBox::Cancel)->text(), QStringLiteral("Cancel"));
        QCOMPARE(box->defaultButton(), box->button(QMessageBox::No));
    }

    void queuedAnswersNeverBlock()
    {
        CustomMessageBox::setNextAnswer(QMessageBox::No);
        CustomMessageBox::setNextAnswer(QMessageBox::Ok);
        QCOMPARE(CustomMessageBox::question(
                     nullptr, QStringLiteral("Exit"), QStringLiteral("VPN connection is active. Disconnect and exit?")),
                 QMessageBox::No);
        QCOMPARE(CustomMessageBox::critical(nullptr, QStringLiteral("Tavrin"), QStringLiteral("Wrong Login/Password.")),
                 QMessageBox::Ok);
        QCOMPARE(CustomMessageBox::pendingAnswers(), 0);
        const auto shown = CustomMessageBox::answeredMessages();
        QCOMPARE(shown.size(), 2);
        QCOMPARE(shown.at(0).kind, CustomMessageBox::Kind::Question);
        QCOMPARE(shown.at(0).title, QStringLiteral("Exit"));
        QCOMPARE(shown.at(1).kind, CustomMessageBox::Kind::Critical);
        QCOMPARE(shown.at(1).text, QStringLiteral("Wrong Login/Password."));
    }
};

QTEST_MAIN(TestCommonWidgets)
#include "tst_CommonWidgets.moc"
