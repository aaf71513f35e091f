#include "DownloadFile.h"

#include <QDebug>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QSslConfiguration>

DownloadFile::DownloadFile(const QString& link, QObject* parent)
    : QObject(parent)
    , url(link)
    , manager(new QNetworkAccessManager())
{ }

DownloadFile::~DownloadFile()
{
    // The access manager drops the transfer when it goes; its last signals must not reach a half-destroyed object.
    if (reply)
        reply->disconnect(this);
}

void DownloadFile::start(const QString& name)
{
    if (!tempDir.isValid()) {
        qDebug() << "Error: Create temp dir.";
        return;
    }
    tempDir.setAutoRemove(false);
    file.setFileName(QStringLiteral("%1/%2").arg(tempDir.path(), name));
    qDebug() << "Updater file path:" << file.fileName();
    if (!file.open(QIODevice::Append)) {
        emit finished(false);
        return;
    }
    QNetworkRequest request {QUrl(url)};
    QSslConfiguration tls = request.sslConfiguration();
    tls.setPeerVerifyMode(QSslSocket::VerifyNone);
    tls.setProtocol(QSsl::SecureProtocols);
    request.setSslConfiguration(tls);
    reply = manager->get(request);
    connect(reply, &QNetworkReply::downloadProgress, this, &DownloadFile::onDownloadProgress);
    connect(reply, &QNetworkReply::errorOccurred, this, &DownloadFile::onError);
    connect(reply, &QNetworkReply::finished, this, &DownloadFile::onFinished);
    connect(reply, &QNetworkReply::readyRead, this, &DownloadFile::onReadyRead);
}

QString DownloadFile::getFilePath()
{
    return file.fileName();
}

void DownloadFile::onFinished()
{
    onReadyRead();
    file.close();
    emit finished(reply->error() == QNetworkReply::NoError);
}

void DownloadFile::onError(QNetworkReply::NetworkError code)
{
    // Reported by onFinished.
    Q_UNUSED(code)
}

void DownloadFile::onDownloadProgress(qint64 bytesReceived, qint64 bytesTotal)
{
    emit progress(float(bytesReceived) / float(bytesTotal));
}

void DownloadFile::onReadyRead()
{
    if (file.isOpen() && reply)
        file.write(reply->readAll());
}
