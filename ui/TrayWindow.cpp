#include "TrayWindow.h"

#include <QDebug>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QVBoxLayout>

TrayWindow::TrayWindow(QWidget* parent)
    : QMainWindow(parent)
{
    setObjectName(QStringLiteral("MainWindowClass"));
    setStyleSheet(QStringLiteral("QMainWindow#MainWindowClass {\nbackground:transparent;\n}"));
    auto* central = new QWidget(this);
    central->setObjectName(QStringLiteral("mainCentralWidget"));
    central->setStyleSheet(QStringLiteral("QWidget#mainCentralWidget { background: white; }"));
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    setCentralWidget(central);

    setWindowIcon(QIcon(QStringLiteral(":/resources/tvn.ico")));
    setWindowTitle(QStringLiteral("Tavrin"));
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowMinimizeButtonHint | Qt::CustomizeWindowHint
                   | Qt::WindowCloseButtonHint);
}

TrayWindow::~TrayWindow() = default;

void TrayWindow::updateSize()
{
    adjustSize();
    setFixedSize(FixedWidth, FixedHeight);
}

void TrayWindow::centerScreen(QRect& rect)
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    if (screens.isEmpty() || !screens.first()) {
        qDebug() << "[FAIL] centerScreen: screen pointer is null";
        return;
    }
    const QRect screen = screens.first()->geometry();
    const int w = rect.width();
    const int h = rect.height();
    rect.setLeft(screen.width() / 2 - w / 2);
    rect.setTop(screen.height() / 2 - h / 2);
}

void TrayWindow::showCentred()
{
    show();
    setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
    activateWindow();
    QRect rect = geometry();
    centerScreen(rect);
    setGeometry(rect);
    raise();
}

void TrayWindow::hideToTray()
{
    m_tray->icon()->setVisible(true);
    hide();
}

void TrayWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::WindowStateChange) {
        if (isMinimized()) {
            m_tray->icon()->setVisible(true);
            QTimer::singleShot(0, this, &QWidget::hide);
        } else {
            QTimer::singleShot(0, this, &QWidget::show);
        }
        event->ignore();
    } else if (event->type() == QEvent::LanguageChange) {
        setWindowTitle(QString());
        if (m_tray)
            m_tray->retranslate();
    }
    QMainWindow::changeEvent(event);
}
