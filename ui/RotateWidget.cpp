#include "RotateWidget.h"

#include <QPainter>
#include <QTimer>

RotateWidget::RotateWidget(const QString& picturePath, QWidget* parent)
    : QWidget(parent)
    , m_picture(picturePath)
    , m_timer(new QTimer(this))
{
    setAttribute(Qt::WA_TranslucentBackground);
    resize(m_picture.size());
    m_timer->setInterval(TickMs);
    connect(m_timer, &QTimer::timeout, this, &RotateWidget::onTick);
}

bool RotateWidget::isRunning() const
{
    return m_timer->isActive();
}

void RotateWidget::start()
{
    m_timer->start();
}

void RotateWidget::stop()
{
    m_timer->stop();
}

void RotateWidget::onTick()
{
    m_angle += StepDegrees;
    if (m_angle >= 360)
        m_angle = 0;
    update();
}

void RotateWidget::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event)
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QPointF centre(m_picture.width() / 2.0, m_picture.height() / 2.0);
    painter.translate(centre);
    painter.rotate(m_angle);
    painter.translate(-centre);
    painter.drawPixmap(0, 0, m_picture);
}
