#pragma once

#include <QObject>

class QNetworkReply;

// Watchdog for one reply: closes it when it is still running after the given time. A child of the reply, so it
// dies with it and never touches a reply that is gone.
class ReplyTimeout : public QObject
{
    Q_OBJECT

public:
    ReplyTimeout(QNetworkReply* reply, int ms);

public slots:
    void timeout();
};
