#pragma once

#include <QString>

// Proxy choice passed along with a connect request. Kept for interface compatibility: the engine
// does not use a proxy, and no field is read.
struct ProxySetting
{
    bool enabled = false;
    QString host;
    int port = 0;
    QString user;
    QString password;
};
