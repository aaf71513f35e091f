#pragma once

#include <QIcon>
#include <QMap>
#include <QObject>
#include <QString>

class QAction;
class QMenu;
class QSystemTrayIcon;

// The notification-area icon and its menu: shows the connection state and offers show,
// connect, reconnect, disconnect and quit.
class SystemTray : public QObject
{
    Q_OBJECT

public:
    enum IconState { Disconnected, Connecting, Connected };
    Q_ENUM(IconState)

    static constexpr int BalloonMs = 2000;

    explicit SystemTray(QObject* parent = nullptr);
    ~SystemTray() override;

    void init();

    void setActiveServer(const QString& name);
    void setEnableUserActions(bool enable);
    void setStatusDisconnected(bool notify);
    void setStatusConnecting(bool notify = false);
    // The tunnel is being set up again (after a link loss, say): it can still be ended.
    void setStatusReestablishing();
    void setStatusConnected(bool notify);
    // The kill switch blocks all traffic but the program's own: the tooltip says so.
    void setBlocked(bool blocked);
    void retranslate();
    void loadIcons();
    void removeNotification();

    QSystemTrayIcon* icon() const { return trayIcon; }
    QMenu* contextMenu() const { return menu; }
    int currentStatus() const { return status; }
    QString iconPath() const { return m_iconPath; }

signals:
    void clickShow();
    void clickConnect();
    void clickReconnect();
    void clickDisconnect();
    void clickExit();

protected:
    // The balloon itself; tests override it to see what would pop up and when.
    virtual void showBalloon(const QString& text);

private:
    void setIconPath(const QString& path);
    void applyConnectText();
    void applyToolTip();

    QSystemTrayIcon* trayIcon = nullptr;
    QMenu* menu = nullptr;
    QAction* showAction = nullptr;
    QAction* connectAction = nullptr;
    QAction* reconnectAction = nullptr;
    QAction* disconnectAction = nullptr;
    QAction* quitAction = nullptr;
    QMap<IconState, QIcon>* icons;
    qint32 status = 0;
    QString activeServer;
    QString m_iconPath;
    bool m_blocked = false;
};
