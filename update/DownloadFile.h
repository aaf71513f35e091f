#pragma once

#include <QFile>
#include <QNetworkReply>
#include <QObject>
#include <QSharedPointer>
#include <QSslError>
#include <QString>
#include <QTemporaryDir>

class QNetworkAccessManager;

// Downloads one file into a fresh temporary directory that is kept afterwards, so that another process (the
// helper daemon installing an update) can still read it. No time limit and no re-send.
class DownloadFile : public QObject
{
    Q_OBJECT

public:
    explicit DownloadFile(const QString& link, QObject* parent = nullptr);
    ~DownloadFile() override;

    // Saves the download as `name` in the temporary directory.
    void start(const QString& name);
    QString getFilePath();
    // The server's certificate did not verify, so nothing was asked of it nor written.
    bool isUnverified() const { return !m_tlsErrors.isEmpty(); }

signals:
    // A fraction from 0 to 1; negative while the total is unknown.
    void progress(float valuw);
    // A failed download leaves its partial file behind.
    void finished(bool success);

public slots:
    void onFinished();
    void onError(QNetworkReply::NetworkError code);
    void onDownloadProgress(qint64 bytesReceived, qint64 bytesTotal);
    void onReadyRead();
    void onSslErrors(const QList<QSslError>& errors);

private:
    QString url;
    QSharedPointer<QNetworkAccessManager> manager;
    QFile file;
    QNetworkReply* reply = nullptr;
    QTemporaryDir tempDir;
    QString m_tlsErrors;
};
