#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;

// The sign-in page: asks for the service account's user name and password and hands them on.
class LoginWindow : public QWidget
{
    Q_OBJECT

public:
    explicit LoginWindow(QWidget* parent = nullptr);

    // Empties both fields (on log-out).
    void clear();
    // Ends the wait cursor that a sign-in started.
    void restoreCursor();
    // After a sign-in that got no answer: waits (busy) for the check of the network, then says whether
    // the machine has no network at all or only the service is out of reach.
    void explainNoAnswer();

    QLineEdit* loginEdit() const { return m_edLogin; }
    QLineEdit* passwordEdit() const { return m_edPassword; }
    QPushButton* signInButton() const { return m_pbSignIn; }

signals:
    void signedIn(QString login, QString password);

public slots:
    void onSignIn();
    void onEnterLoginPressed();
    void onEnterPasswordPressed();
    void onLoginSelectionChanged();

protected:
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void retranslate();

    QLabel* m_logo;
    QLabel* m_welcome;
    QLineEdit* m_edLogin;
    QLineEdit* m_edPassword;
    QPushButton* m_pbSignIn;
};
