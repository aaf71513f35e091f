#pragma once

#include "ConnectHost.h"
#include "SystemTray.h"

#include <QAction>
#include <QMenu>
#include <QStringList>

// A tray that never pops up a balloon.
class QuietTray : public SystemTray
{
public:
    using SystemTray::SystemTray;

protected:
    void showBalloon(const QString&) override { }
};

// Stands in for the main window: hands out the account data it is given, counts page changes and
// passes the tray relays on to a real tray, recording their order.
class ConnectTestHost : public ConnectHost
{
public:
    ConnectTestHost() { tray.init(); }

    QByteArray getConfigOvpnByServer(QString) override { return config; }
    QByteArray getCertifOvpnByUser(QString) override { return cert; }
    QByteArray getKeyOvpnByUser(QString) override { return key; }
    void onBack() override { ++backs; }
    void onShow() override { ++shows; }
    void setTrayStatusConnected(bool notify) override
    {
        trayCalls << QStringLiteral("connected");
        tray.setStatusConnected(notify);
    }
    void setTrayStatusDisconnected(bool notify) override
    {
        trayCalls << QStringLiteral("disconnected");
        tray.setStatusDisconnected(notify);
    }
    void setTrayStatusConnecting() override
    {
        trayCalls << QStringLiteral("connecting");
        tray.setStatusConnecting();
    }
    void setTrayActiveServer(QString& name) override { tray.setActiveServer(name); }

    // The tray menu's connect entry, which carries the state and the server name.
    QString trayText() const { return tray.contextMenu()->actions().at(2)->text(); }

    QByteArray config;
    QByteArray cert;
    QByteArray key;
    int backs = 0;
    int shows = 0;
    QStringList trayCalls;
    QuietTray tray;
};
