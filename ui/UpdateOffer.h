#pragma once

#include <QObject>
#include <QSharedPointer>
#include <QString>

class ConnectWindow;
class MainWindow;
class ProgressDlg;
class SoftwareUpdater;
class SystemTray;

// Asks the service for a newer version when told to, offers it, downloads it with a progress dialog and hands the
// package to the helper daemon through the connect page; once the daemon takes it the program ends. Its texts keep
// the main window's translation context, under which the catalogues hold them.
class UpdateOffer : public QObject
{
    Q_OBJECT

public:
    UpdateOffer(MainWindow* window, SystemTray* tray, ConnectWindow* connectPage);
    ~UpdateOffer() override;

    ProgressDlg* progressDialog() const { return m_progressDlg.data(); }

signals:
    // The check got no answer from the service; whoever schedules the checks decides when to ask again.
    void checkFailed();

public slots:
    void check();
    // The package is on disk: the helper daemon is asked to install it.
    void onDownloaded(QString path);

private:
    void onNewVersion();
    void onCheckAnswered(const QString& version, const QString& link, bool answered);
    void onConfirm();
    void onCancel();
    void onDownloadFailed();
    void onInstallFailed();
    void onInstallAnswered(bool accepted);
    void restoreTrayStatus();

    MainWindow* m_window;
    SystemTray* m_tray;
    ConnectWindow* m_connectPage;
    QSharedPointer<SoftwareUpdater> m_updater;
    QSharedPointer<ProgressDlg> m_progressDlg;
};
