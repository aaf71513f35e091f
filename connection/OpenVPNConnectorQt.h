#pragma once

#include <QSharedPointer>
#include <QString>
#include <QThread>

#include <atomic>

class ServiceConnector;

// Has the helper daemon start OpenVPN with a management port, then follows OpenVPN through that
// port on its own thread: answers the credential prompts and turns notifications into signals.
class OpenVPNConnectorQt : public QThread
{
    Q_OBJECT

public:
    struct Parameters
    {
        QSharedPointer<ServiceConnector> serviceConnector;
    };

    explicit OpenVPNConnectorQt(const Parameters& parameters, QObject* parent = nullptr);
    // Waits for the thread: Qt aborts when a running thread object is destroyed.
    ~OpenVPNConnectorQt() override;

    void connect(const QString& configPath, const QString& username, const QString& password);
    // Stops a session that is still finishing and waits for its thread.
    void endPreviousSession();
    // Asks OpenVPN to stop when the management connection is up; never waits.
    void disconnect();

    static int getAvailablePort();
    bool connectToPipeAndRunOpenVPN();

    // The argument string the daemon starts OpenVPN with.
    static QString openVpnArguments(const QString& configPath, int managementPort);

    // Longest management line kept; the rest of a longer line is dropped.
    static constexpr int LineBufferSize = 4096;

signals:
    void connected();
    void disconnected();
    void reconnecting();
    void stateChanged(const QString& state);
    void error(int code);
    void log(const QString& line);
    void connectedToHelper();
    void failedConnectToHelper();
    void statisticsUpdated(quint64 bytesIn, quint64 bytesOut);

protected:
    void run() override;

private:
    void session();
    void acquireSession();
    bool connectManagement();
    void interpretLine(const QByteArray& rawLine);
    void sendCredential(const char* keyword, const QString& value);

    std::atomic<int> state {0};
    QString configPath;
    QString username;
    QString password;
    std::atomic<bool> stopRequested {false};
    std::atomic<bool> managementConnected {false};
    std::atomic<int> managementPort {0};
    Parameters params;

    // Touched by the thread only.
    int m_retries = 0;
    bool m_tapReported = false;
    bool m_proxyReported = false;
    std::atomic<unsigned> m_sessionsEnded {0};
};
