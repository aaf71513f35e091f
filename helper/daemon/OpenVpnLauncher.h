#pragma once

#include <QString>
#include <mutex>

#include <memory>

class QThread;

class TunnelOwner;

// Starts OpenVPN as root for a client, one at a time: a new start stops the previous one. Only
// the argument shape the client builds is accepted, and OpenVPN is given a private copy of the
// checked configuration, never the caller's file itself. It inherits no descriptor of the daemon
// but its standard ones, and its management port is reserved for the tunnel's owner while it
// runs. Whenever it ends, by any cause, the resolver configuration its up script changed is put
// back. Safe to call from several threads: starts and stops are taken in turn.
class OpenVpnLauncher
{
public:
    OpenVpnLauncher(const QString& stateDir, const QString& resolverScript, TunnelOwner& owner);
    ~OpenVpnLauncher();

    // False with the reason in error when refused or OpenVPN could not be started.
    bool start(const QString& arguments, qint64 callerUid, QString& error);
    void stop();
    // At start: an OpenVPN that an earlier run of the daemon started and left behind (it was
    // killed) is stopped, and the resolver put back, whatever became of that OpenVPN.
    void stopLeftover();

    struct Run;

private:
    void stopLocked();
    QString recordFile() const;

    QString m_stateDir;
    QString m_resolverScript;
    TunnelOwner& m_owner;
    std::mutex m_mutex;
    std::shared_ptr<Run> m_run;
    std::unique_ptr<QThread> m_watcher;
};
