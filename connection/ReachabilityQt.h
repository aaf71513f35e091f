#pragma once

#include <QEvent>
#include <QObject>
#include <QString>

// A change of the wireless network, posted to the watcher from any thread.
class WifiChangeEvent : public QEvent
{
public:
    static constexpr QEvent::Type EventType = QEvent::Type(QEvent::User + 1);
    enum Code {
        JoinedFirstKind = 10001,
        JoinedSecondKind = 10002,
        Left = 10003,
    };

    WifiChangeEvent(int changeCode, const QString& networkName)
        : QEvent(EventType)
        , code(changeCode)
        , ssid(networkName)
    { }

    const int code;
    const QString ssid;
};

// Reports wireless network changes. No notifier exists on this platform, so nothing posts events
// yet; a platform notifier reaches the one instance through g_reachabilityThis.
class ReachabilityQt : public QObject
{
    Q_OBJECT

public:
    explicit ReachabilityQt(QObject* parent = nullptr);
    ~ReachabilityQt() override;

    void installWifiNotifier();
    bool startNotifier();
    void stopNotifier();
    QString getCurrentSsid();

signals:
    // joined, first kind of network, network name
    void statusChangeWifi(bool, bool, QString);
    void log(const QString&);

protected:
    void customEvent(QEvent* event) override;
};

extern ReachabilityQt* g_reachabilityThis;
