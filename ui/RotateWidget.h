#pragma once

#include <QPixmap>
#include <QWidget>

class QTimer;

// Busy indicator: turns a picture about its centre, one full turn in 1.8 s.
class RotateWidget : public QWidget
{
    Q_OBJECT

public:
    RotateWidget(const QString& picturePath, QWidget* parent = nullptr);

    static constexpr int TickMs = 10;
    static constexpr int StepDegrees = 2;

    int angle() const { return m_angle; }
    bool isRunning() const;

public slots:
    void start();
    void stop();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void onTick();

    QPixmap m_picture;
    int m_angle = 0;
    QTimer* m_timer;
};
