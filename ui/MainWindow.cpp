#include "MainWindow.h"

#include <QDebug>
#include <QGuiApplication>
#include <QScreen>
#include <QVBoxLayout>

bool needExit = false;

MainWindow::MainWindow(QWidget* parent)
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
    updateSize();
}

MainWindow::~MainWindow() = default;

void MainWindow::updateSize()
{
    adjustSize();
    setFixedSize(FixedWidth, FixedHeight);
}

void MainWindow::onShow()
{
    qDebug() << "MainWindow::onShow";
    show();
    setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
    activateWindow();
    QRect rect = geometry();
    centerScreen(rect);
    setGeometry(rect);
    raise();
}

void MainWindow::onHide()
{
    qDebug() << "MainWindow::onHide";
    hide();
}

void MainWindow::onWakeUp()
{
    activateWindow();
}

void MainWindow::centerScreen(QRect& rect)
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
