#pragma once

#include <QString>

// Installs an update package with dpkg in the background. The package is copied to the state
// directory first, so what dpkg installs is what was checked.
class UpdateInstaller
{
public:
    explicit UpdateInstaller(const QString& stateDir);

    bool install(const QString& path, qint64 callerUid);
    QString error() const { return m_error; }

private:
    QString m_stateDir;
    QString m_error;
};
