#pragma once

#include <QObject>
#include <QSharedPointer>
#include <QString>

class DownloadFile;

// Asks the service whether a newer client exists, and on the user's consent downloads the package into a
// temporary directory. Installing it is the main window's business (through the helper daemon).
class SoftwareUpdater : public QObject
{
    Q_OBJECT

public:
    explicit SoftwareUpdater(QObject* parent = nullptr);

    // "3.6.9" gives 306009; a version without a dot is taken as it is, unscaled.
    static int versionToNumber(const QString& text);
    QString getRemoteVersion();
    // The last download failed because the server's certificate did not verify.
    bool downloadUnverified() const;

signals:
    void newUpdate();
    void versionError();
    void remoteVersion(QString value);
    void progressDownload(float value);
    void downloadComplited(QString);
    void downloadFailed();
    void installFailed();

public slots:
    // Each call connects to the service client anew, so an updater that checks twice hears later answers twice.
    void check();
    void downloadUpdate();
    void cancelDownloadUpdate();
    void onProgrammUpdate(QString version, QString link, bool success);
    void onDownloadFinished(bool);
    void installUpdate();

private:
    QString m_link;
    QString m_newVersion;
    QSharedPointer<DownloadFile> m_download;
};
