#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// Runs the local stunnel client of the stealth mode: OpenVPN talks TCP to 127.0.0.1:getPort() and
// stunnel wraps the stream in TLS towards the server. Stops it through stunnel's own pid file, so a
// stunnel left by an earlier, crashed run is stopped as well.
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

    QString configFilePath() const;

private:
    QTemporaryDir configDir;
    QProcess* process;
    QString program;
    QString pidFile;
    qint32 localPort = 0;
};
