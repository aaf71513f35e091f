#pragma once

#include <QPoint>
#include <QWidget>

class QLabel;
class QPushButton;

// Title bar of the frameless main window: drags the window and offers close and minimise.
class MovableWidget : public QWidget
{
    Q_OBJECT

public:
    explicit MovableWidget(QWidget* parent = nullptr);

    void setMovingWindow(QWidget* window);
    QString title() const;

signals:
    void closeClick();
    void hideClick();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QWidget* m_movingWindow = nullptr;
    QPoint m_dragOffset;
    bool m_dragging = false;
    QLabel* m_appName;
    QPushButton* m_closeButton;
    QPushButton* m_hideButton;
};
