#include "GetManager.h"

#include <QEventLoop>
#include <QNetworkReply>
#include <QSslConfiguration>

#include "ReplyTimeout.h"
#include "ServiceUrls.h"

namespace {
const int maxRetries = 5;
}

GetManager::GetManager(int timeoutMs, QObject* parent)
    : QObject(parent)
    , timeout(timeoutMs)
{
    connect(&manager, &QNetworkAccessManager::finished, this, &GetManager::slotFinished);
}

void GetManager::getAsync(QUrl url, int id)
{
    Q_UNUSED(id)
    success = false;
    errorString.clear();
    retryCount = 0;
    request.setUrl(url);
    // The service's certificate is not checked: the client only needs an encrypted channel to it.
    QSslConfiguration tls = request.sslConfiguration();
    tls.setPeerVerifyMode(QSslSocket::VerifyNone);
    tls.setProtocol(QSsl::SecureProtocols);
    request.setSslConfiguration(tls);
    getReply();
}

void GetManager::getReply()
{
    QNetworkReply* reply = manager.get(request);
    new ReplyTimeout(reply, timeout);
}

void GetManager::slotFinished(QNetworkReply* reply)
{
    if (reply->error() != QNetworkReply::NoError) {
        success = false;
        errorString = reply->errorString();
    } else {
        success = true;
        errorString.clear();
        data = reply->readAll();
    }
    reply->deleteLater();
    if (!success && retryCount < maxRetries) {
        ++retryCount;
        getReply();
        return;
    }
    emit finished(0);
}

void GetManager::slotDownloadProgress(qint64 received, qint64 total)
{
    emit progress(int(double(received) * 100 / double(total)));
}

bool GetManager::checkInternetBlock()
{
    QNetworkRequest probe(QUrl(ServiceUrls::probe()));
    QNetworkReply* reply = m_probeManager.get(probe);
    new ReplyTimeout(reply, timeout);
    QEventLoop loop;
    connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    const bool answered = reply->bytesAvailable() != 0;
    reply->deleteLater();
    return answered;
}
