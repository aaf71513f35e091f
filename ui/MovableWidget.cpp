#include "MovableWidget.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QStyleOption>

#include "Constants.h"
#include "WidgetStyle.h"

MovableWidget::MovableWidget(QWidget* parent)
    : QWidget(parent)
    , m_appName(new QLabel(this))
    , m_closeButton(new QPushButton(this))
    , m_hideButton(new QPushButton(this))
{
    setObjectName(QStringLiteral("MovableWidget"));
    setStyleSheet(WidgetStyle::sheet());
    m_appName->setText(QStringLiteral("%1 %2").arg(QStringLiteral("Tavrin"), Constants::ClientVersion));
    m_appName->setObjectName(QStringLiteral("lbAppName"));
    m_closeButton->setObjectName(QStringLiteral("pbClose"));
    m_hideButton->setObjectName(QStringLiteral("pbHide"));
    m_closeButton->setIcon(QIcon(QStringLiteral(":/resources/close.svg")));
    m_hideButton->setIcon(QIcon(QStringLiteral(":/resources/minimize.svg")));
    for (QPushButton* button : {m_hideButton, m_closeButton}) {
        button->setIconSize(QSize(14, 14));
        button->setFixedSize(22, 22);
        button->setFocusPolicy(Qt::NoFocus);
        button->setCursor(Qt::PointingHandCursor);
    }

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 4, 6, 4);
    layout->setSpacing(2);
    layout->addWidget(m_appName);
    layout->addStretch();
    layout->addWidget(m_hideButton);
    layout->addWidget(m_closeButton);

    connect(m_closeButton, &QPushButton::clicked, this, &MovableWidget::closeClick);
    connect(m_hideButton, &QPushButton::clicked, this, &MovableWidget::hideClick);
}

void MovableWidget::setMovingWindow(QWidget* window)
{
    m_movingWindow = window;
}

QString MovableWidget::title() const
{
    return m_appName->text();
}

void MovableWidget::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !m_movingWindow) {
        QWidget::mousePressEvent(event);
        return;
    }
    m_dragOffset = event->globalPos() - m_movingWindow->frameGeometry().topLeft();
    m_dragging = true;
    event->accept();
}

void MovableWidget::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_dragging || !(event->buttons() & Qt::LeftButton) || !m_movingWindow) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    m_movingWindow->move(event->globalPos() - m_dragOffset);
    event->accept();
}

void MovableWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_dragging = false;
    QWidget::mouseReleaseEvent(event);
}

void MovableWidget::paintEvent(QPaintEvent* event)
{
    // A plain QWidget subclass draws its style-sheet background only when asked to.
    Q_UNUSED(event)
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}
