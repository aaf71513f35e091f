#pragma once

#include <QByteArray>
#include <QHash>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QObject>
#include <QString>
#include <QUrl>

class QNetworkReply;
class QSslError;

// One request channel to the service: one GET at a time, each attempt watched by a ReplyTimeout, a failed attempt
// re-sent at once up to five times. The owner reads the public fields after finished(0).
class GetManager : public QObject
{
    Q_OBJECT

public:
    GetManager(int timeoutMs, QObject* parent);

    void getAsync(QUrl url, int id);
    // Blocks in a local event loop until a plain-http probe of a public site answers or times out; true when
    // the answer had a body.
    bool checkInternetBlock();

    QNetworkAccessManager manager;
    bool success = false;
    // The failed reply's error text; for a service whose certificate did not verify, the TLS errors.
    QString errorString;
    // The last attempt failed because the service's certificate did not verify.
    bool unverified = false;
    // The last successful body; kept across a failed request, so look at `success` first.
    QByteArray data;
    // `data` is the body of the attempt last started, as received() gave it in pieces (false for an earlier request's
    // reply that finished after a later one was sent).
    bool streamed = false;
    const int timeout;
    int retryCount = 0;
    QNetworkRequest request;

signals:
    void progress(int percent);
    // An attempt has been sent; the pieces of its body follow, and then finished(), or the next attempt.
    void attemptStarted();
    // A piece of the body of the current attempt, as it arrives; `data` becomes all of them in order.
    void received(const QByteArray& piece);
    void finished(int);

public slots:
    void getReply();
    void slotFinished(QNetworkReply* reply);
    void slotDownloadProgress(qint64 received, qint64 total);
    void slotSslErrors(QNetworkReply* reply, const QList<QSslError>& errors);

private:
    void readPiece(QNetworkReply* reply);

    // The reply of the attempt last started, and what each unfinished reply has brought so far: a request sent on
    // the channel before the last one still finishes with its whole body.
    QNetworkReply* m_current = nullptr;
    QHash<QNetworkReply*, QByteArray> m_bodies;
    // The probe has its own access manager so that slotFinished never takes its body or re-sends for it.
    QNetworkAccessManager m_probeManager;
};
