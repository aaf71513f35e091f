#include "UpdateInstaller.h"

#include "TrustedFile.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStringList>

namespace {
constexpr qint64 MaxPackageSize = qint64(1) << 30;
}

UpdateInstaller::UpdateInstaller(const QString& stateDir)
    : m_stateDir(stateDir)
{ }

bool UpdateInstaller::install(const QString& path, qint64 callerUid)
{
    m_error.clear();
    const QStringList parts = path.split(QLatin1Char('/'));
    if (!path.startsWith(QLatin1Char('/')) || !path.endsWith(QLatin1String(".deb"))
        || parts.contains(QStringLiteral("..")) || path.contains(QLatin1Char('\n'))) {
        m_error = QStringLiteral("not an absolute path to a .deb file: \"%1\"").arg(path);
        return false;
    }
    const QString dir = m_stateDir + QStringLiteral("/update");
    QDir().mkpath(dir);
    QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    const QString copy = dir + QStringLiteral("/update.deb");
    TrustedFile source(path, callerUid);
    if (!source.copyTo(copy, MaxPackageSize)) {
        m_error = source.error();
        return false;
    }
    QFile check(copy);
    if (!check.open(QIODevice::ReadOnly) || check.read(21) != "!<arch>\ndebian-binary") {
        QFile::remove(copy);
        m_error = QStringLiteral("%1 is not a Debian package").arg(path);
        return false;
    }
    // dpkg may replace the client, which waits for nothing: run it detached.
    const bool started = QProcess::startDetached(
        QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), QStringLiteral("dpkg -i \"$1\"; rm -f \"$1\""), QStringLiteral("sh"), copy});
    if (!started)
        m_error = QStringLiteral("dpkg cannot be started");
    return started;
}
