#pragma once

#include <QList>
#include <QStringList>
#include <QWidget>

class QLabel;
class QPushButton;
class QRadioButton;

// Lets the user pick one of the account's VPN logins after sign-in.
class SelectionAccountWindow : public QWidget
{
    Q_OBJECT

public:
    explicit SelectionAccountWindow(QWidget* parent = nullptr);

    QList<QRadioButton*> buttons() const { return m_buttons; }
    QPushButton* continueButton() const { return m_btContinue; }

signals:
    void continueAuth(QString login);

public slots:
    void setUsers(QStringList users);
    void onContinueClicked();

protected:
    void changeEvent(QEvent* event) override;

private:
    void retranslate();

    QLabel* m_lbTitle;
    QWidget* m_centralWidget;
    QPushButton* m_btContinue;
    QList<QRadioButton*> m_buttons;
};
