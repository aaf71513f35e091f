#pragma once

#include <QMainWindow>

// The program's only top-level window: a fixed-size frame that shows one page at a time.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    static constexpr int FixedWidth = 340;
    static constexpr int FixedHeight = 500;

    void updateSize();
    void centerScreen(QRect& rect);

public slots:
    void onShow();
    void onHide();
    void onWakeUp();
};

// Set when the program is about to quit on purpose.
extern bool needExit;
