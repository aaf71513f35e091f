#include "SearchEdit.h"

#include <QEvent>
#include <QStyle>
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
    // At the trailing end, where the style sheet's padding leaves room for it (mirrored right to left).
    const int side = qMax(16, height() - 8);
    const QRect place(width() - side - 4, (height() - side) / 2, side, side);
    m_clearButton->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
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
    else if (event->type() == QEvent::LayoutDirectionChange)
        placeClearButton();
    QLineEdit::changeEvent(event);
}
