#include "ReplyTimeout.h"

#include <QNetworkReply>
#include <QTimer>

ReplyTimeout::ReplyTimeout(QNetworkReply* reply, int ms)
    : QObject(reply)
{
    if (reply)
        QTimer::singleShot(ms, this, &ReplyTimeout::timeout);
}

void ReplyTimeout::timeout()
{
    auto* reply = qobject_cast<QNetworkReply*>(parent());
    // Closing a running reply aborts it; it then finishes with OperationCanceledError like any other failure.
    if (reply && reply->isRunning())
        reply->close();
}
