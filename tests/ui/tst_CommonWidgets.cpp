#include <QImageReader>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include "CustomMessageBox.h"
#include "FlagPicture.h"
#include "MovableWidget.h"
#include "ProgressDlg.h"
#include "ShowLog.h"

Q_DECLARE_METATYPE(Qt::MouseButton)

class TestCommonWidgets : public QObject
{
    Q_OBJECT

private slots:
    void logLine_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("shown");
        QTest::newRow("time and flags are dropped")
            << QStringLiteral("1678000000,I,Initialization Sequence Completed") << "Initialization Sequence Completed";
        QTest::newRow("line breaks are removed") << QStringLiteral("1,I,first\r\nsecond\n") << "firstsecond";
        QTest::newRow("markup is shown as written") << QStringLiteral("1,W,<ca> & x") << "<ca> & x";
    }

    void logLine()
    {
        QFETCH(QString, line);
        QFETCH(QString, shown);
        ShowLog log;
        log.onUpdateLog(line);
        QCOMPARE(log.plainText(), shown);
        log.onUpdateLog(line);
        QCOMPARE(log.plainText(), shown + QLatin1Char('\n') + shown);
        log.clear();
        QVERIFY(log.plainText().isEmpty());
    }

    void progress()
    {
        ProgressDlg dialog;
        dialog.show();
        dialog.setProgress(0.999f);
        QCOMPARE(dialog.value(), 99); // truncated, not rounded
        dialog.setProgress(1.0f);
        QCOMPARE(dialog.value(), 100);
        QSignalSpy cancel(&dialog, &ProgressDlg::cancel);
        QTest::mouseClick(dialog.findChild<QPushButton*>(), Qt::LeftButton);
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QCOMPARE(cancel.count(), 2);
        // The owner decides when the dialog goes away.
        QVERIFY(dialog.isVisible());
    }

    void titleBarDrag_data()
    {
        QTest::addColumn<Qt::MouseButton>("button");
        QTest::addColumn<bool>("moves");
        QTest::newRow("left button drags") << Qt::LeftButton << true;
        QTest::newRow("right button moves nothing") << Qt::RightButton << false;
    }

    void titleBarDrag()
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
        const QPoint end = start + QPoint(40, 25);
        QMouseEvent press(QEvent::MouseButtonPress, start, bar->mapToGlobal(start), button, button, Qt::NoModifier);
        QMouseEvent move(QEvent::MouseMove, end, bar->mapToGlobal(end), Qt::NoButton, button, Qt::NoModifier);
        QMouseEvent release(QEvent::MouseButtonRelease, end, bar->mapToGlobal(end), button, {}, Qt::NoModifier);
        for (QMouseEvent* event : {&press, &move, &release})
            QApplication::sendEvent(bar, event);
        QTRY_COMPARE(window.frameGeometry().topLeft(), moves ? before + QPoint(40, 25) : before);

        QSignalSpy closed(bar, &MovableWidget::closeClick);
        QSignalSpy hidden(bar, &MovableWidget::hideClick);
        QTest::mouseClick(bar->findChild<QPushButton*>(QStringLiteral("pbClose")), Qt::LeftButton);
        QTest::mouseClick(bar->findChild<QPushButton*>(QStringLiteral("pbHide")), Qt::LeftButton);
        QCOMPARE(closed.count(), 1);
        QCOMPARE(hidden.count(), 1);
    }

    void messageBoxWithoutTitleNamesTheProduct()
    {
        auto box = CustomMessageBox::create(CustomMessageBox::Kind::Question,
                                            nullptr,
                                            QString(),
                                            QStringLiteral("text"),
                                            QMessageBox::Yes | QMessageBox::No,
                                            QMessageBox::No);
        QCOMPARE(box->windowTitle(), QStringLiteral("Tavrin"));
        QVERIFY(!box->iconPixmap().isNull());
        QCOMPARE(box->defaultButton(), box->button(QMessageBox::No));
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
        QCOMPARE(FlagPicture::resourcePath(code) == QStringLiteral(":/resources/flag-placeholder.svg"), !hasFlag);
        QCOMPARE(FlagPicture::pixmap(code).size(), QSize(FlagPicture::Width, FlagPicture::Height));
    }
};

QTEST_MAIN(TestCommonWidgets)
#include "tst_CommonWidgets.moc"
