#include "ConnectWindowForm.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

QPushButton* iconButton(QWidget* parent, const char* name, const QString& icon)
{
    auto* button = new QPushButton(parent);
    button->setObjectName(QLatin1String(name));
    button->setIcon(QIcon(icon));
    button->setIconSize(QSize(22, 22));
    button->setFixedSize(34, 34);
    button->setCursor(Qt::PointingHandCursor);
    button->setFlat(true);
    return button;
}

// A small picture and its text, side by side in the middle of the row.
QHBoxLayout* centredPair(QWidget* picture, QWidget* text)
{
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    row->addStretch();
    row->addWidget(picture);
    row->addWidget(text);
    row->addStretch();
    return row;
}

QLabel* label(QWidget* parent, const char* name)
{
    auto* result = new QLabel(parent);
    result->setObjectName(QLatin1String(name));
    return result;
}

} // namespace

void ConnectWindowForm::setupUi(QWidget* page)
{
    page->setObjectName(QStringLiteral("ConnectWindow"));
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(16, 10, 16, 14);
    column->setSpacing(0);

    // Top bar: settings, product name, account.
    auto* top = new QHBoxLayout;
    btnSettings = iconButton(page, "btnSettings", QStringLiteral(":/resources/settings.svg"));
    btnAccount = iconButton(page, "btnAccount", QStringLiteral(":/resources/account.svg"));
    auto* title = label(page, "lbTitle");
    title->setText(QStringLiteral("Tavrin"));
    title->setAlignment(Qt::AlignCenter);
    top->addWidget(btnSettings);
    top->addStretch();
    top->addWidget(title);
    top->addStretch();
    top->addWidget(btnAccount);
    column->addLayout(top);
    column->addSpacing(14);

    // Status line: shield and state text.
    lbShield = label(page, "lbShield");
    lbShield->setFixedSize(20, 24);
    lbStatus = label(page, "lbStatus");
    column->addLayout(centredPair(lbShield, lbStatus));
    lbBlocked = label(page, "lbBlocked");
    lbBlocked->setAlignment(Qt::AlignCenter);
    lbBlocked->setWordWrap(true);
    lbBlocked->setTextFormat(Qt::RichText);
    lbBlocked->setStyleSheet(QStringLiteral("QLabel{font: 12px \"Arial\"; color: #d0021b;}"));
    lbBlocked->hide();
    column->addWidget(lbBlocked);
    column->addSpacing(16);

    // The big button in its ring; the two rotator labels lie on the ring, the button above them.
    lbCircle = label(page, "lbCircle");
    lbCircle->setFixedSize(RingSize + 24, RingSize + 24);
    const int inset = 12;
    lbRotatorGreen = label(lbCircle, "lbRotatorGreen");
    lbRotatorGreen->setGeometry(inset, inset, RingSize, RingSize);
    lbRotatorAnimation = label(lbCircle, "lbRotatorAnimation");
    lbRotatorAnimation->setGeometry(inset, inset, RingSize, RingSize);
    btnConnect = new QPushButton(lbCircle);
    btnConnect->setObjectName(QStringLiteral("btnConnect"));
    const int offset = inset + (RingSize - ButtonSize) / 2;
    btnConnect->setGeometry(offset, offset, ButtonSize, ButtonSize);
    btnConnect->setIconSize(QSize(ButtonSize, ButtonSize));
    btnConnect->setCursor(Qt::PointingHandCursor);
    btnConnect->raise();
    column->addWidget(lbCircle, 0, Qt::AlignHCenter);
    column->addSpacing(6);

    lbRates = label(page, "lbRates");
    lbRates->setAlignment(Qt::AlignCenter);
    // Keeps its room while hidden, so the location line does not jump when the tunnel comes up.
    QSizePolicy ratesPolicy = lbRates->sizePolicy();
    ratesPolicy.setRetainSizeWhenHidden(true);
    lbRates->setSizePolicy(ratesPolicy);
    column->addWidget(lbRates);
    column->addSpacing(14);

    // Location: flag and name, then the button that picks a location or shows the connection.
    lbFlag = label(page, "lbFlag");
    lbFlag->setFixedSize(16, 11);
    lbLocation = label(page, "lbLocation");
    column->addLayout(centredPair(lbFlag, lbLocation));
    column->addSpacing(4);
    btnSelectLocation = new QPushButton(page);
    btnSelectLocation->setObjectName(QStringLiteral("btnSelectLocation"));
    btnSelectLocation->setCursor(Qt::PointingHandCursor);
    column->addWidget(btnSelectLocation, 0, Qt::AlignHCenter);
    column->addStretch();

    // Subscription notice, shown only when the expiry is near.
    lbSubscribtionInfo = label(page, "lbSubscribtionInfo");
    lbSubscribtionInfo->setAlignment(Qt::AlignCenter);
    lbSubscribtionAdditionalInfo = label(page, "lbSubscribtionAdditionalInfo");
    lbSubscribtionAdditionalInfo->setAlignment(Qt::AlignCenter);
    lbSubscribtionAdditionalInfo->setWordWrap(true);
    btRenew = new QPushButton(page);
    btRenew->setObjectName(QStringLiteral("btRenew"));
    btRenew->setCursor(Qt::PointingHandCursor);
    column->addWidget(lbSubscribtionInfo);
    column->addSpacing(2);
    column->addWidget(lbSubscribtionAdditionalInfo);
    column->addSpacing(8);
    column->addWidget(btRenew, 0, Qt::AlignHCenter);

    retranslateUi();
}

void ConnectWindowForm::retranslateUi()
{
    btnSettings->setToolTip(tr("Settings"));
    btnAccount->setToolTip(tr("Account"));
    btRenew->setText(tr("Renew subscription"));
    lbSubscribtionAdditionalInfo->setText(tr("Renew it on the site to stay protected."));
}
