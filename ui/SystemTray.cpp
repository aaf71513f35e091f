#include "SystemTray.h"

#include <QAction>
#include <QDebug>
#include <QMenu>
#include <QSystemTrayIcon>

SystemTray::SystemTray(QObject* parent)
    : QObject(parent)
    , icons(new QMap<IconState, QIcon>)
{ }

SystemTray::~SystemTray()
{
    if (trayIcon)
        trayIcon->setContextMenu(nullptr);
    delete menu;
    delete icons;
}

void SystemTray::init()
{
    trayIcon = new QSystemTrayIcon(QIcon(QStringLiteral(":/MainWindow/Images/vpnlogo.ico")), this);
    applyToolTip();

    menu = new QMenu;
    showAction = new QAction(QStringLiteral("Tavrin"), menu);
    connectAction = new QAction(tr("Connect"), menu);
    reconnectAction = new QAction(tr("Reconnect"), menu);
    disconnectAction = new QAction(tr("Disconnect"), menu);
    quitAction = new QAction(tr("Quit"), menu);

    menu->addAction(showAction);
    menu->addSeparator();
    menu->addAction(connectAction);
    menu->addAction(reconnectAction);
    menu->addAction(disconnectAction);
    menu->addSeparator();
    menu->addAction(quitAction);
    trayIcon->setContextMenu(menu);

    const bool connected = connect(showAction, &QAction::triggered, this, &SystemTray::clickShow)
        && connect(connectAction, &QAction::triggered, this, &SystemTray::clickConnect)
        && connect(reconnectAction, &QAction::triggered, this, &SystemTray::clickReconnect)
        && connect(disconnectAction, &QAction::triggered, this, &SystemTray::clickDisconnect)
        && connect(quitAction, &QAction::triggered, this, &SystemTray::clickExit);
    if (!connected)
        qDebug() << "FAIL connect system tray signal";

    trayIcon->setVisible(true);
    setStatusDisconnected(false);
}

void SystemTray::setActiveServer(const QString& name)
{
    activeServer = name;
}

void SystemTray::setEnableUserActions(bool enable)
{
    connectAction->setEnabled(enable);
    disconnectAction->setEnabled(enable);
    reconnectAction->setEnabled(enable);
}

void SystemTray::setStatusDisconnected(bool notify)
{
    if (notify)
        showBalloon(tr("Your connection is not secured now!"));
    status = 0;
    applyConnectText();
    connectAction->setEnabled(true);
    reconnectAction->setEnabled(false);
    disconnectAction->setEnabled(false);
    setIconPath(QStringLiteral(":/resources/eye-gray-light.svg"));
}

void SystemTray::setStatusConnecting(bool notify)
{
    // Connecting has no balloon of its own.
    Q_UNUSED(notify)
    status = 1;
    applyConnectText();
    connectAction->setEnabled(false);
    reconnectAction->setEnabled(false);
    disconnectAction->setEnabled(false);
}

void SystemTray::setStatusReestablishing()
{
    status = 3;
    applyConnectText();
    connectAction->setEnabled(false);
    reconnectAction->setEnabled(false);
    disconnectAction->setEnabled(true);
}

void SystemTray::setStatusConnected(bool notify)
{
    if (notify)
        showBalloon(tr("Your connection is encrypted and secured now!"));
    status = 2;
    applyConnectText();
    connectAction->setEnabled(false);
    reconnectAction->setEnabled(true);
    disconnectAction->setEnabled(true);
    setIconPath(QStringLiteral(":/resources/eye-gray-dark.svg"));
}

void SystemTray::setBlocked(bool blocked)
{
    m_blocked = blocked;
    applyToolTip();
}

void SystemTray::applyToolTip()
{
    trayIcon->setToolTip(m_blocked ? tr("Tavrin: Internet blocked by the kill switch") : QStringLiteral("Tavrin"));
}

void SystemTray::retranslate()
{
    applyConnectText();
    applyToolTip();
    reconnectAction->setText(tr("Reconnect"));
    disconnectAction->setText(tr("Disconnect"));
    quitAction->setText(tr("Quit"));
}

void SystemTray::loadIcons() { }

void SystemTray::removeNotification() { }

void SystemTray::showBalloon(const QString& text)
{
    trayIcon->showMessage(QStringLiteral("Tavrin"), text, QIcon(), BalloonMs);
}

void SystemTray::setIconPath(const QString& path)
{
    m_iconPath = path;
    trayIcon->setIcon(QIcon(path));
}

void SystemTray::applyConnectText()
{
    switch (status) {
    case 1:
        connectAction->setText(tr("Connecting to %1").arg(activeServer));
        break;
    case 2:
        connectAction->setText(tr("Connected to %1").arg(activeServer));
        break;
    case 3:
        connectAction->setText(tr("Re-establishing the connection to %1").arg(activeServer));
        break;
    default:
        connectAction->setText(tr("Connect %1").arg(activeServer));
        break;
    }
}
