#include "SearchEdit.h"

#include <QEvent>
#include <QToolButton>

#include "WidgetStyle.h"

SearchEdit::SearchEdit(QWidget* parent)
    : QLineEdit(parent)
    , m_clearButton(new QToolButton(this))
{
    setObjectName(QStringLiteral("SearchEdit"));
    setStyleSheet(WidgetStyle::sheet());
    setPlaceholderText(tr("Location"));
    m_clearButton->setIcon(QIcon(QStringLiteral(":/resources/delete.svg")));
    m_clearButton->setIconSize(QSize(14, 14));
    m_clearButton->setCursor(Qt::ArrowCursor);
    m_clearButton->setFocusPolicy(Qt::NoFocus);
    m_clearButton->hide();
    connect(m_clearButton, &QToolButton::clicked, this, &QLineEdit::clear);
    connect(this, &QLineEdit::textChanged, this, &SearchEdit::updateClearButton);
}

void SearchEdit::updateClearButton(const QString& text)
{
    m_clearButton->setVisible(!text.isEmpty());
}

void SearchEdit::placeClearButton()
{
    const int side = qMax(16, height() - 8);
    m_clearButton->resize(side, side);
    m_clearButton->move(width() - side - 4, (height() - side) / 2);
}

void SearchEdit::resizeEvent(QResizeEvent* event)
{
    QLineEdit::resizeEvent(event);
    placeClearButton();
}

void SearchEdit::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        setPlaceholderText(tr("Location"));
    QLineEdit::changeEvent(event);
}
