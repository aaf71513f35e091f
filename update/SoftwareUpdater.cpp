#include "SoftwareUpdater.h"

#include <QDebug>
#include <QStringList>

#include "Constants.h"
#include "DownloadFile.h"
#include "NetworkManager.h"

SoftwareUpdater::SoftwareUpdater(QObject* parent)
    : QObject(parent)
{ }

int SoftwareUpdater::versionToNumber(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char('.'), Qt::KeepEmptyParts);
    if (parts.size() < 2)
        return parts.first().toInt();
    const int patch = parts.size() > 2 ? parts[2].toInt() : 0;
    return parts[0].toInt() * 100000 + parts[1].toInt() * 1000 + patch;
}

QString SoftwareUpdater::getRemoteVersion()
{
    return m_newVersion;
}

bool SoftwareUpdater::downloadUnverified() const
{
    return m_download && m_download->isUnverified();
}

void SoftwareUpdater::check()
{
    m_link.clear();
    NetworkManager* client = NetworkManager::instance();
    connect(client, &NetworkManager::programUpdate, this, &SoftwareUpdater::onProgrammUpdate);
    client->programUpdateRequest();
}

void SoftwareUpdater::onProgrammUpdate(QString version, QString link, bool success)
{
    qDebug() << "onProgrammUpdate" << version << link << (success ? "true" : "false");
    if (!success || version.isEmpty() || link.isEmpty()) {
        emit versionError();
        return;
    }
    const int local = versionToNumber(Constants::ClientVersion);
    const int remote = versionToNumber(version);
    emit remoteVersion(version);
    if (local >= remote)
        return;
    m_newVersion = version;
    m_link = link;
    emit newUpdate();
}

void SoftwareUpdater::downloadUpdate()
{
    cancelDownloadUpdate();
    // Deleted later: the download may be dropped from a slot of its own signal.
    m_download = QSharedPointer<DownloadFile>(new DownloadFile(m_link), &QObject::deleteLater);
    connect(m_download.data(), &DownloadFile::progress, this, &SoftwareUpdater::progressDownload);
    connect(m_download.data(), &DownloadFile::finished, this, &SoftwareUpdater::onDownloadFinished);
    m_download->start(QStringLiteral("update.deb"));
}

void SoftwareUpdater::cancelDownloadUpdate()
{
    if (m_download)
        m_download->disconnect(this);
    m_download.reset();
}

void SoftwareUpdater::onDownloadFinished(bool ok)
{
    if (!ok) {
        emit downloadFailed();
        return;
    }
    emit downloadComplited(m_download->getFilePath());
    installUpdate();
}

void SoftwareUpdater::installUpdate()
{
    // On Linux the main window hands the package to the helper daemon when downloadComplited arrives.
}
