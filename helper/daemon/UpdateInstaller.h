#pragma once

#include "HelperPaths.h"
#include "PackageCheck.h"

#include <QDeadlineTimer>
#include <QString>
#include <QStringList>

// Installs an update package with dpkg in the background. The package is copied to the state
// directory first, and only that copy is checked (PackageCheck: the vendor's signature, this
// product, a newer version) and installed, so what dpkg installs is what was checked.
//
// The package's postinst restarts this daemon. Under systemd, stopping the daemon's unit kills
// every process in its control group, so dpkg runs as a transient unit of its own there
// (systemd-run); elsewhere it is started detached.
class UpdateInstaller
{
public:
    explicit UpdateInstaller(const HelperPaths& paths);

    bool install(const QString& path, qint64 callerUid);
    QString error() const { return m_error; }

private:
    QStringList dpkgCommand(const QString& package, bool underSystemd) const;
    bool startUnderSystemd(const QStringList& command, const QDeadlineTimer& deadline);

    QString m_stateDir;
    QString m_systemdRunDir;
    QString m_dpkgRoot;
    PackageCheck m_check;
    QString m_error;
};
