#pragma once

#include "ConnectionController.h"

#include <QString>

// What the connect page needs from the window that holds it: the account data for a connection,
// page changes and the tray relays. The main window implements it; tests give a small stand-in.
class ConnectHost : public ConnectionController::Materials
{
public:
    // Brings the connect page to the front.
    virtual void onBack() = 0;
    // Shows and raises the window.
    virtual void onShow() = 0;

    virtual void setTrayStatusConnected(bool notify) = 0;
    virtual void setTrayStatusDisconnected(bool notify) = 0;
    virtual void setTrayStatusConnecting() = 0;
    virtual void setTrayStatusReestablishing() = 0;
    virtual void setTrayActiveServer(QString& name) = 0;
    virtual void setTrayBlocked(bool blocked) = 0;
};
