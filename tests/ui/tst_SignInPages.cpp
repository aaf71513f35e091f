#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QtTest>

#include "CustomMessageBox.h"
#include "LoginWindow.h"
#include "PageTestEnvironment.h"
#include "SelectionAccountWindow.h"

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

    void signIn_data()
    {
        QTest::addColumn<QString>("login");
        QTest::addColumn<QString>("password");
        QTest::addColumn<bool>("sent");
        QTest::newRow("blanks are sent as typed") << " user@example.org "
                                                  << "   " << true;
        QTest::newRow("empty user name") << ""
                                         << "secret" << false;
    }
    void signIn()
    {
        QFETCH(QString, login);
        QFETCH(QString, password);
        QFETCH(bool, sent);
        LoginWindow page;
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        QSignalSpy signedIn(&page, &LoginWindow::signedIn);
        // Return in the user name moves on to the password; Return there signs in.
        page.loginEdit()->setFocus();
        QTest::keyClicks(page.loginEdit(), login);
        QTest::keyClick(page.loginEdit(), Qt::Key_Return);
        QVERIFY(page.passwordEdit()->hasFocus());
        QCOMPARE(signedIn.count(), 0);
        QTest::keyClicks(page.passwordEdit(), password);
        if (sent) {
            QTest::keyClick(page.passwordEdit(), Qt::Key_Return);
        } else {
            CustomMessageBox::setNextAnswer(QMessageBox::Ok);
            QTest::mouseClick(page.signInButton(), Qt::LeftButton);
        }
        QCOMPARE(signedIn.count(), sent ? 1 : 0);
        QCOMPARE(bool(QGuiApplication::overrideCursor()), sent);
        if (sent) {
            QCOMPARE(signedIn.first(), QVariantList({login, password}));
            QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
            page.restoreCursor();
            QVERIFY(!QGuiApplication::overrideCursor());
        } else {
            const auto messages = CustomMessageBox::answeredMessages();
            QCOMPARE(messages.size(), 1);
            QCOMPARE(messages.first().title, QStringLiteral("Tavrin"));
            QCOMPARE(messages.first().text, QStringLiteral("You must enter username and password to sign in."));
        }
    }

    void selection_data()
    {
        QTest::addColumn<QStringList>("first");
        QTest::addColumn<QStringList>("second");
        QTest::addColumn<int>("choice");
        QTest::newRow("second list replaces the first") << QStringList {"a", "b", "c"} << QStringList {"x", "y"} << 1;
        QTest::newRow("empty list sends nothing") << QStringList {"a", "b"} << QStringList {} << -1;
    }
    void selection()
    {
        QFETCH(QStringList, first);
        QFETCH(QStringList, second);
        QFETCH(int, choice);
        SelectionAccountWindow page;
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        QSignalSpy chosen(&page, &SelectionAccountWindow::continueAuth);
        page.setUsers(first);
        page.setUsers(second);
        QStringList shown;
        for (QRadioButton* button : page.buttons()) {
            shown.append(button->text());
            QVERIFY(!button->isChecked());
        }
        QCOMPARE(shown, second);
        QCOMPARE(page.findChildren<QRadioButton*>().size(), second.size());
        if (choice >= 0) {
            // Buttons added to a shown page appear with the next event loop pass.
            QTRY_VERIFY(page.buttons().at(choice)->isVisible());
            // On the mark itself: the button is wider than its mark and text.
            const QPoint mark(8, page.buttons().at(0)->height() / 2);
            QTest::mouseClick(page.buttons().at(0), Qt::LeftButton, Qt::NoModifier, mark);
            QTest::mouseClick(page.buttons().at(choice), Qt::LeftButton, Qt::NoModifier, mark);
            QVERIFY(!page.buttons().at(0)->isChecked());
        }
        QTest::mouseClick(page.continueButton(), Qt::LeftButton);
        QCOMPARE(chosen.count(), choice >= 0 ? 1 : 0);
        if (choice >= 0)
            QCOMPARE(chosen.first().first().toString(), second.at(choice));
    }
};

TAVRIN_PAGE_TEST_MAIN(TestSignInPages)
#include "tst_SignInPages.moc"
