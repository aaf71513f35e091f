#include "ReachabilityQt.h"

ReachabilityQt* g_reachabilityThis = nullptr;

ReachabilityQt::ReachabilityQt(QObject* parent)
    : QObject(parent)
{
    g_reachabilityThis = this;
}

ReachabilityQt::~ReachabilityQt()
{
    if (g_reachabilityThis == this)
        g_reachabilityThis = nullptr;
}

void ReachabilityQt::installWifiNotifier() { }

bool ReachabilityQt::startNotifier()
{
    return true;
}

void ReachabilityQt::stopNotifier() { }

QString ReachabilityQt::getCurrentSsid()
{
    return {};
}

void ReachabilityQt::customEvent(QEvent* event)
{
    if (event->type() != WifiChangeEvent::EventType)
        return;
    const auto* change = static_cast<WifiChangeEvent*>(event);
    switch (change->code) {
    case WifiChangeEvent::JoinedFirstKind:
        emit statusChangeWifi(true, true, change->ssid);
        break;
    case WifiChangeEvent::JoinedSecondKind:
        emit statusChangeWifi(true, false, change->ssid);
        break;
    case WifiChangeEvent::Left:
        emit statusChangeWifi(false, false, QString());
        break;
    default:
        break;
    }
}
