#pragma once

#include "ConnectHost.h"
#include "SystemTray.h"

// A tray that never pops up a balloon.
class QuietTray : public SystemTray
{
public:
    using SystemTray::SystemTray;

protected:
    void showBalloon(const QString&) override { }
};

// Stands in for the main window: hands out the account data it is given, counts page changes and
// passes the tray relays on to a real tray.
class ConnectTestHost : public ConnectHost
{
public:
    ConnectTestHost() { tray.init(); }

    QByteArray getConfigOvpnByServer(QString) override { return config; }
    QByteArray getCertifOvpnByUser(QString) override { return cert; }
    QByteArray getKeyOvpnByUser(QString) override { return key; }
    void onBack() override { ++backs; }
    void onShow() override { ++shows; }
    void setTrayStatusConnected(bool notify) override { tray.setStatusConnected(notify); }
    void setTrayStatusDisconnected(bool notify) override { tray.setStatusDisconnected(notify); }
    void setTrayStatusConnecting() override
    {
        ++connectings;
        tray.setStatusConnecting();
    }
    void setTrayStatusReestablishing() override { tray.setStatusReestablishing(); }
    void setTrayActiveServer(QString& name) override { tray.setActiveServer(name); }
    void setTrayBlocked(bool blocked) override { tray.setBlocked(blocked); }

    QByteArray config, cert, key;
    int backs = 0, shows = 0, connectings = 0;
    QuietTray tray;
};
