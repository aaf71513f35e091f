#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QTimer>

class QSocketNotifier;

// Runs the local stunnel client of the stealth mode: OpenVPN talks TCP to 127.0.0.1:getPort() and
// stunnel wraps the stream in TLS towards the server. Stops it through stunnel's own pid file, so a
// stunnel left by an earlier, crashed run is stopped as well. stunnel leaves the process we start
// and runs on in the background: the pid it writes is watched, and stopped() tells when it ends
// without killProcess() having asked it to.
class StunnelManager : public QObject
{
    Q_OBJECT

public:
    explicit StunnelManager(QObject* parent = nullptr);
    ~StunnelManager() override;

    // Stops a running stunnel, writes a new configuration and starts stunnel without waiting for it.
    void setConfigAndRunProcess(const QString& host, int port, const QString& sni);
    int getPort() const;
    static int getAvailablePort();
    bool makeConfigFile(const QString& host, int port, const QString& sni);
    void killProcess();
    // Starts stunnel again with the configuration of the last start: the same server and local port.
    void restart();
    // Removes the configuration directories that earlier runs, killed before they could, left.
    void removeLeftovers() const;

    QString configFilePath() const;

signals:
    void stopped();

private:
    void run();
    void watch();
    void unwatch();
    // The pid of the stunnel of ours the pid file names, or -1 with why not.
    int ownStunnelPid(QString* why) const;

    QTemporaryDir configDir;
    QProcess* process;
    QString program;
    QString pidFile;
    qint32 localPort = 0;
    QTimer pidPoll; // until stunnel has written its pid
    int pollsLeft = 0;
    int pidfd = -1;
    QSocketNotifier* exitNotifier = nullptr;
};
