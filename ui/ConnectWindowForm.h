#pragma once

#include <QCoreApplication>

class QLabel;
class QPushButton;
class QWidget;

// The widgets of the connect page, built in code and named as the page refers to them.
class ConnectWindowForm
{
    Q_DECLARE_TR_FUNCTIONS(ConnectWindow)

public:
    static constexpr int RingSize = 160;
    static constexpr int ButtonSize = 116;

    void setupUi(QWidget* page);
    void retranslateUi();

    QPushButton* btnSettings = nullptr;
    QPushButton* btnAccount = nullptr;
    QPushButton* btnConnect = nullptr;
    QPushButton* btnSelectLocation = nullptr;
    QPushButton* btRenew = nullptr;
    QLabel* lbShield = nullptr;
    QLabel* lbCircle = nullptr;
    QLabel* lbRotatorGreen = nullptr;
    QLabel* lbRotatorAnimation = nullptr;
    QLabel* lbLocation = nullptr;
    QLabel* lbSubscribtionInfo = nullptr;
    QLabel* lbSubscribtionAdditionalInfo = nullptr;

    // Beyond the named ones: the status line beside the shield, the flag of the location and the rates.
    QLabel* lbStatus = nullptr;
    // Shown while the kill switch blocks the Internet, with a link to its setting.
    QLabel* lbBlocked = nullptr;
    QLabel* lbFlag = nullptr;
    QLabel* lbRates = nullptr;
};
