#include "SelectionAccountWindow.h"

#include <QEvent>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "WidgetStyle.h"

SelectionAccountWindow::SelectionAccountWindow(QWidget* parent)
    : QWidget(parent)
    , m_lbTitle(new QLabel(this))
    , m_centralWidget(new QWidget(this))
    , m_btContinue(new QPushButton(this))
{
    WidgetStyle::setUpPage(this, QStringLiteral("SelectionAccountWindow"));

    m_lbTitle->setObjectName(QStringLiteral("lbTitle"));
    m_lbTitle->setAlignment(Qt::AlignCenter);
    m_lbTitle->setWordWrap(true);
    m_centralWidget->setObjectName(QStringLiteral("centralWidget"));
    auto* choices = new QVBoxLayout(m_centralWidget);
    choices->setContentsMargins(20, 12, 20, 12);
    choices->setSpacing(14);
    m_btContinue->setObjectName(QStringLiteral("btContinue"));
    m_btContinue->setFlat(true);
    m_btContinue->setCursor(Qt::PointingHandCursor);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(30, 40, 30, 40);
    layout->setSpacing(16);
    layout->addStretch(1);
    layout->addWidget(m_lbTitle);
    layout->addWidget(m_centralWidget);
    layout->addWidget(m_btContinue, 0, Qt::AlignHCenter);
    layout->addStretch(2);

    connect(m_btContinue, &QPushButton::clicked, this, &SelectionAccountWindow::onContinueClicked);
    retranslate();
}

void SelectionAccountWindow::retranslate()
{
    m_lbTitle->setText(tr("Select VPN login to connect"));
    m_btContinue->setText(tr("Continue"));
}

void SelectionAccountWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void SelectionAccountWindow::setUsers(QStringList users)
{
    qDeleteAll(m_buttons);
    m_buttons.clear();
    for (const QString& user : qAsConst(users)) {
        // One parent for all: the buttons exclude each other without a group.
        auto* button = new QRadioButton(user, m_centralWidget);
        button->setStyleSheet(QStringLiteral("font: 14px \"Arial\"; color: #808080;"));
        button->setCursor(Qt::PointingHandCursor);
        m_centralWidget->layout()->addWidget(button);
        m_buttons.append(button);
    }
}

void SelectionAccountWindow::onContinueClicked()
{
    for (QRadioButton* button : qAsConst(m_buttons)) {
        if (button->isChecked()) {
            emit continueAuth(button->text());
            return;
        }
    }
}
