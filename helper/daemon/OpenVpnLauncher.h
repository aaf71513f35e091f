#pragma once

#include <QObject>
#include <QString>

class QProcess;

// Starts OpenVPN as root for a client, one at a time: a new start stops the previous one. Only
// the argument shape the client builds is accepted, and OpenVPN is given a private copy of the
// checked configuration, never the caller's file itself.
class OpenVpnLauncher : public QObject
{
    Q_OBJECT
public:
    OpenVpnLauncher(const QString& stateDir, const QString& resolverScript, QObject* parent = nullptr);
    ~OpenVpnLauncher() override;

    bool start(const QString& arguments, qint64 callerUid);
    void stop();
    QString error() const { return m_error; }

private:
    void onOutput();

    QString m_stateDir;
    QString m_resolverScript;
    QProcess* m_process = nullptr;
    QString m_error;
};
