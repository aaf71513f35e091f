#include "UpdateOffer.h"

#include <QCoreApplication>

#include "ConnectWindow.h"
#include "CustomMessageBox.h"
#include "MainWindow.h"
#include "NetworkManager.h"
#include "ProgressDlg.h"
#include "SoftwareUpdater.h"
#include "SystemTray.h"

UpdateOffer::UpdateOffer(MainWindow* window, SystemTray* tray, ConnectWindow* connectPage)
    : m_window(window)
    , m_tray(tray)
    , m_connectPage(connectPage)
{
    connect(m_connectPage, &ConnectWindow::updateInstallAnswered, this, &UpdateOffer::onInstallAnswered);
}

UpdateOffer::~UpdateOffer() = default;

void UpdateOffer::check()
{
    m_updater.reset(new SoftwareUpdater, &QObject::deleteLater);
    connect(m_updater.data(), &SoftwareUpdater::newUpdate, this, &UpdateOffer::onNewVersion);
    connect(NetworkManager::instance(),
            &NetworkManager::programUpdate,
            this,
            &UpdateOffer::onCheckAnswered,
            Qt::UniqueConnection);
    m_updater->check();
}

void UpdateOffer::onCheckAnswered(const QString& version, const QString& link, bool answered)
{
    Q_UNUSED(version)
    Q_UNUSED(link)
    // An answer without an offer needs no retry; only a check that got no answer does.
    if (!answered)
        emit checkFailed();
}

void UpdateOffer::onNewVersion()
{
    m_window->onShow();
    if (CustomMessageBox::question(m_window,
                                   QCoreApplication::translate("MainWindow", "Tavrin Update"),
                                   QCoreApplication::translate("MainWindow", "Available new update. Download it?"),
                                   QMessageBox::Yes | QMessageBox::No,
                                   QMessageBox::Yes)
        == QMessageBox::Yes)
        onConfirm();
}

void UpdateOffer::onConfirm()
{
    if (!m_updater)
        return;
    m_progressDlg.reset(new ProgressDlg(m_window), &QObject::deleteLater);
    connect(m_progressDlg.data(), &ProgressDlg::cancel, this, &UpdateOffer::onCancel);
    connect(m_updater.data(), &SoftwareUpdater::progressDownload, m_progressDlg.data(), &ProgressDlg::setProgress);
    connect(m_updater.data(), &SoftwareUpdater::downloadFailed, this, &UpdateOffer::onDownloadFailed);
    connect(m_updater.data(), &SoftwareUpdater::installFailed, this, &UpdateOffer::onInstallFailed);
    connect(m_updater.data(), &SoftwareUpdater::downloadComplited, this, &UpdateOffer::onDownloaded);
    m_updater->downloadUpdate();
    m_progressDlg->show();
    m_tray->setEnableUserActions(false);
}

void UpdateOffer::restoreTrayStatus()
{
    if (m_connectPage->isConnected())
        m_tray->setStatusConnected(false);
    else
        m_tray->setStatusDisconnected(false);
}

void UpdateOffer::onCancel()
{
    restoreTrayStatus();
    if (m_progressDlg) {
        m_progressDlg->hide();
        m_progressDlg.reset();
    }
    if (m_updater)
        m_updater->cancelDownloadUpdate();
}

void UpdateOffer::onDownloadFailed()
{
    const bool unverified = m_updater && m_updater->downloadUnverified();
    restoreTrayStatus();
    onCancel();
    CustomMessageBox::critical(m_window,
                               QStringLiteral("Tavrin"),
                               unverified
                                   ? CustomMessageBox::unverifiedServiceText()
                                   : QCoreApplication::translate("MainWindow", "Error during downloading update."));
}

void UpdateOffer::onInstallFailed()
{
    restoreTrayStatus();
    onCancel();
    CustomMessageBox::critical(m_window,
                               QStringLiteral("Tavrin"),
                               QCoreApplication::translate("MainWindow", "Error during installing update."));
}

void UpdateOffer::onDownloaded(QString path)
{
    m_connectPage->doUpdateClient(path);
}

void UpdateOffer::onInstallAnswered(bool accepted)
{
    // Refused, the installed version keeps running.
    if (!accepted) {
        onInstallFailed();
        return;
    }
    if (m_progressDlg) {
        m_progressDlg->hide();
        m_progressDlg.reset();
    }
    m_window->onExit();
}
