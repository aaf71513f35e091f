#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include "CustomMessageBox.h"
#include "LoginWindow.h"
#include "PageTestEnvironment.h"

class TestSignInPages : public QObject
{
    Q_OBJECT

private slots:
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
};

TAVRIN_PAGE_TEST_MAIN(TestSignInPages)
#include "tst_SignInPages.moc"
