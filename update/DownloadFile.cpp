#include "DownloadFile.h"

#include <QDebug>
#include <QNetworkAccessManager>

#include "ServiceAddresses.h"
#include "ServiceTls.h"

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
    // Owner-only whatever the umask: the helper daemon installs only a file nobody else can write.
    if (!file.open(QIODevice::Append) || !file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner)) {
        emit finished(false);
        return;
    }
    reply = manager->get(ServiceAddresses::request(QUrl(url)));
    connect(reply, &QNetworkReply::sslErrors, this, &DownloadFile::onSslErrors);
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

void DownloadFile::onSslErrors(const QList<QSslError>& errors)
{
    // Nothing ignores them, so the handshake fails and onFinished reports the failure.
    m_tlsErrors = ServiceTls::describe(errors);
    qWarning().noquote()
        << QStringLiteral("The certificate of %1 did not verify: %2").arg(QUrl(url).host(), m_tlsErrors);
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
