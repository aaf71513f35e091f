#include "GetManager.h"

#include <QDebug>
#include <QEventLoop>
#include <QNetworkReply>
#include <QSslError>

#include "ReplyTimeout.h"
#include "ServiceAddresses.h"
#include "ServiceTls.h"
#include "ServiceUrls.h"

namespace {
const int maxRetries = 5;
// Where a reply keeps the TLS errors of its handshake until it finishes.
const char* const tlsErrorsProperty = "tavrinTlsErrors";
} // namespace

GetManager::GetManager(int timeoutMs, QObject* parent)
    : QObject(parent)
    , timeout(timeoutMs)
{
    connect(&manager, &QNetworkAccessManager::finished, this, &GetManager::slotFinished);
    connect(&manager, &QNetworkAccessManager::sslErrors, this, &GetManager::slotSslErrors);
}

void GetManager::getAsync(QUrl url, int id)
{
    Q_UNUSED(id)
    success = false;
    unverified = false;
    errorString.clear();
    retryCount = 0;
    request = ServiceAddresses::request(url);
    getReply();
}

void GetManager::getReply()
{
    QNetworkReply* reply = manager.get(request);
    new ReplyTimeout(reply, timeout);
    m_current = reply;
    m_bodies.insert(reply, QByteArray());
    connect(reply, &QIODevice::readyRead, this, [this, reply] { readPiece(reply); });
    emit attemptStarted();
}

void GetManager::readPiece(QNetworkReply* reply)
{
    const QByteArray piece = reply->readAll();
    if (piece.isEmpty())
        return;
    m_bodies[reply] += piece;
    if (reply == m_current)
        emit received(piece);
}

void GetManager::slotFinished(QNetworkReply* reply)
{
    if (reply->error() != QNetworkReply::NoError) {
        success = false;
        // Named by its TLS errors rather than by the bare "SSL handshake failed".
        const QString tlsErrors = reply->property(tlsErrorsProperty).toString();
        unverified = !tlsErrors.isEmpty();
        errorString = unverified ? tlsErrors : reply->errorString();
    } else {
        success = true;
        unverified = false;
        errorString.clear();
        streamed = reply == m_current;
        readPiece(reply);
        data = m_bodies.take(reply);
    }
    m_bodies.remove(reply);
    if (reply == m_current)
        m_current = nullptr;
    reply->deleteLater();
    if (!success && retryCount < maxRetries) {
        ++retryCount;
        getReply();
        return;
    }
    if (unverified)
        qWarning().noquote()
            << QStringLiteral("The certificate of %1 did not verify: %2").arg(request.url().host(), errorString);
    emit finished(0);
}

void GetManager::slotSslErrors(QNetworkReply* reply, const QList<QSslError>& errors)
{
    // Nothing ignores them, so the handshake fails and the request is never sent.
    reply->setProperty(tlsErrorsProperty, ServiceTls::describe(errors));
}

void GetManager::slotDownloadProgress(qint64 received, qint64 total)
{
    emit progress(int(double(received) * 100 / double(total)));
}

bool GetManager::checkInternetBlock()
{
    const QNetworkRequest probe {QUrl(ServiceUrls::probe())};
    QNetworkReply* reply = m_probeManager.get(probe);
    new ReplyTimeout(reply, timeout);
    QEventLoop loop;
    connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    const bool answered = reply->bytesAvailable() != 0;
    reply->deleteLater();
    return answered;
}
