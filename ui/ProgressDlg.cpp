#include "ProgressDlg.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "WidgetStyle.h"

ProgressDlg::ProgressDlg(QWidget* parent)
    : QDialog(parent)
    , m_label(new QLabel(this))
    , m_bar(new QProgressBar(this))
    , m_cancelButton(new QPushButton(this))
{
    setObjectName(QStringLiteral("ProgressDlg"));
    setStyleSheet(WidgetStyle::sheet());
    setWindowFlags(windowFlags() & ~Qt::WindowContextHelpButtonHint);
    m_bar->setRange(0, 100);
    m_bar->setValue(0);
    m_bar->setTextVisible(false);
    m_bar->setFixedHeight(8);
    m_cancelButton->setObjectName(QStringLiteral("pbCancel"));
    m_cancelButton->setCursor(Qt::PointingHandCursor);
    m_cancelButton->setAutoDefault(false);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_cancelButton);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 22, 24, 18);
    layout->setSpacing(14);
    layout->addWidget(m_label);
    layout->addWidget(m_bar);
    layout->addLayout(buttons);
    setFixedWidth(340);

    connect(m_cancelButton, &QPushButton::clicked, this, &ProgressDlg::cancel);
    retranslate();
}

int ProgressDlg::value() const
{
    return m_bar->value();
}

void ProgressDlg::setProgress(float fraction)
{
    m_bar->setValue(static_cast<int>(fraction * 100));
}

void ProgressDlg::reject()
{
    // Escape and the window's close button mean the same as "Cancel"; the owner closes the dialog.
    emit cancel();
}

void ProgressDlg::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QDialog::changeEvent(event);
}

void ProgressDlg::retranslate()
{
    setWindowTitle(tr("Update"));
    m_label->setText(tr("Downloading update. Please wait..."));
    m_cancelButton->setText(tr("Cancel"));
}
