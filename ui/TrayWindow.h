#pragma once

#include "SystemTray.h"

#include <QMainWindow>

#include <memory>

// A fixed-size top-level window that lives beside its tray icon: minimising hides it to the tray, and
// showing it brings it back in the middle of the first screen. Knows nothing of the pages it holds.
class TrayWindow : public QMainWindow
{
    Q_OBJECT

public:
    static constexpr int FixedWidth = 340;
    static constexpr int FixedHeight = 500;

    explicit TrayWindow(QWidget* parent = nullptr);
    ~TrayWindow() override;

    SystemTray* tray() const { return m_tray.get(); }
    void updateSize();
    // Moves the rectangle's left and top edges so that a rectangle of its size sits in the middle of the
    // first screen (the screen's own origin is not added).
    void centerScreen(QRect& rect);
    // Shows, un-minimises, activates, centres and raises the window.
    void showCentred();
    void hideToTray();

protected:
    void changeEvent(QEvent* event) override;

    // Goes after everything a derived window holds: its pages may still talk to the tray while they go.
    std::unique_ptr<SystemTray> m_tray;
};
