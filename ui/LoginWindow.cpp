#include "LoginWindow.h"

#include <QAction>
#include <QEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "CustomMessageBox.h"
#include "NetworkManager.h"
#include "WidgetStyle.h"

LoginWindow::LoginWindow(QWidget* parent)
    : QWidget(parent)
    , m_logo(new QLabel(this))
    , m_welcome(new QLabel(this))
    , m_edLogin(new QLineEdit(this))
    , m_edPassword(new QLineEdit(this))
    , m_pbSignIn(new QPushButton(this))
{
    WidgetStyle::setUpPage(this, QStringLiteral("LoginWindow"));

    m_logo->setObjectName(QStringLiteral("lbLogo"));
    m_logo->setPixmap(QPixmap(QStringLiteral(":/resources/logo.png")));
    m_logo->setAlignment(Qt::AlignCenter);
    m_welcome->setObjectName(QStringLiteral("lbWelcome"));
    m_welcome->setAlignment(Qt::AlignCenter);
    m_welcome->setWordWrap(true);

    m_edLogin->setObjectName(QStringLiteral("edLogin"));
    m_edLogin->setAlignment(Qt::AlignCenter);
    m_edLogin->setMinimumHeight(35);
    m_edLogin->addAction(QIcon(QStringLiteral(":/resources/user.svg")), QLineEdit::LeadingPosition);
    m_edPassword->setObjectName(QStringLiteral("edPassword"));
    m_edPassword->setAlignment(Qt::AlignCenter);
    m_edPassword->setEchoMode(QLineEdit::Password);
    m_edPassword->setMinimumHeight(35);
    m_edPassword->addAction(QIcon(QStringLiteral(":/resources/key.svg")), QLineEdit::LeadingPosition);
    m_pbSignIn->setObjectName(QStringLiteral("pbSignIn"));
    m_pbSignIn->setMinimumSize(70, 35);
    m_pbSignIn->setCursor(Qt::PointingHandCursor);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(40, 40, 40, 40);
    layout->setSpacing(12);
    layout->addStretch(2);
    layout->addWidget(m_logo);
    layout->addWidget(m_welcome);
    layout->addSpacing(24);
    layout->addWidget(m_edLogin);
    layout->addWidget(m_edPassword);
    layout->addSpacing(8);
    layout->addWidget(m_pbSignIn);
    layout->addStretch(3);

    connect(m_pbSignIn, &QPushButton::clicked, this, &LoginWindow::onSignIn);
    connect(m_edLogin, &QLineEdit::returnPressed, this, &LoginWindow::onEnterLoginPressed);
    connect(m_edLogin, &QLineEdit::selectionChanged, this, &LoginWindow::onLoginSelectionChanged);
    connect(m_edPassword, &QLineEdit::returnPressed, this, &LoginWindow::onEnterPasswordPressed);
    retranslate();
}

void LoginWindow::retranslate()
{
    m_welcome->setText(tr("Sign in to your Velmora account"));
    m_edLogin->setPlaceholderText(tr("Username "));
    m_edPassword->setPlaceholderText(tr("Password"));
    m_pbSignIn->setText(tr("Login"));
}

void LoginWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void LoginWindow::showEvent(QShowEvent* event)
{
    // Without the focus the placeholders show, which is the page's only explanation.
    m_edLogin->clearFocus();
    m_edPassword->clearFocus();
    QWidget::showEvent(event);
}

void LoginWindow::clear()
{
    m_edLogin->clear();
    m_edPassword->clear();
}

void LoginWindow::restoreCursor()
{
    QGuiApplication::restoreOverrideCursor();
}

void LoginWindow::onSignIn()
{
    const QString login = m_edLogin->text();
    const QString password = m_edPassword->text();
    if (login.isEmpty() || password.isEmpty()) {
        CustomMessageBox::information(
            this, QStringLiteral("Tavrin"), tr("You must enter username and password to sign in."));
        return;
    }
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    emit signedIn(login, password);
}

void LoginWindow::onEnterLoginPressed()
{
    m_edPassword->setFocus();
}

void LoginWindow::onEnterPasswordPressed()
{
    onSignIn();
}

void LoginWindow::onLoginSelectionChanged()
{
    // Kept as a hook; the selection of the user name needs no reaction.
    Q_UNUSED(m_edLogin->hasFocus());
}

void LoginWindow::explainNoAnswer()
{
    setCursor(Qt::WaitCursor);
    setEnabled(false);
    const bool internet = NetworkManager::instance()->checkInternet();
    setEnabled(true);
    restoreCursor();
    // The texts belong to the main window's translations, where they have always been.
    CustomMessageBox::critical(
        window(),
        QStringLiteral("Tavrin"),
        internet ? QCoreApplication::translate("MainWindow", "Application has no access to Velmora")
                 : QCoreApplication::translate("MainWindow", "Application has no access to network."));
}
