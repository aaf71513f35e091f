#include "TimezoneChanger.h"

#include "HelperPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>

TimezoneChanger::TimezoneChanger(const QString& localtime,
                                 const QString& timezoneFile,
                                 const QString& zoneinfoDir,
                                 const QString& stateDir)
    : m_localtime(localtime)
    , m_timezoneFile(timezoneFile)
    , m_zoneinfoDir(zoneinfoDir)
    , m_stateDir(stateDir)
{ }

bool TimezoneChanger::isValidZoneName(const QString& zone)
{
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(QStringLiteral("[A-Za-z0-9_+-]+(/[A-Za-z0-9_+-]+)*")));
    if (zone.toUtf8().size() > 511 || !pattern.match(zone).hasMatch())
        return false;
    const QStringList parts = zone.split(QLatin1Char('/'));
    return !parts.contains(QStringLiteral("..")) && !parts.contains(QStringLiteral("."));
}

bool TimezoneChanger::supported() const
{
    return QFileInfo(m_zoneinfoDir + QStringLiteral("/UTC")).isFile() && QFileInfo(m_localtime).dir().exists();
}

QString TimezoneChanger::savedFile() const
{
    return m_stateDir + QStringLiteral("/timezone.saved");
}

QString TimezoneChanger::currentZone() const
{
    const QFileInfo link(m_localtime);
    if (link.isSymLink()) {
        const QString target = link.symLinkTarget();
        if (target.startsWith(m_zoneinfoDir + QLatin1Char('/')))
            return target.mid(m_zoneinfoDir.size() + 1);
        const QString prefix = QDir(m_zoneinfoDir).canonicalPath() + QLatin1Char('/');
        const QString canonical = QFileInfo(target).canonicalFilePath();
        if (canonical.startsWith(prefix))
            return canonical.mid(prefix.size());
        const int at = target.indexOf(QStringLiteral("zoneinfo/"));
        if (at >= 0)
            return target.mid(at + 9);
    }
    QFile file(m_timezoneFile);
    if (file.open(QIODevice::ReadOnly))
        return QString::fromUtf8(file.readLine()).trimmed();
    return QString();
}

bool TimezoneChanger::setZone(const QString& zone)
{
    const QString zoneFile = m_zoneinfoDir + QLatin1Char('/') + zone;
    QFile data(zoneFile);
    if (!QFileInfo(zoneFile).isFile() || !data.open(QIODevice::ReadOnly) || data.read(4) != "TZif") {
        m_error = QStringLiteral("\"%1\" is not a zone of %2").arg(zone, m_zoneinfoDir);
        return false;
    }
    // Replace the link atomically: a new link beside it, renamed over the old one.
    const QString temporary = m_localtime + QStringLiteral(".tavrin-new");
    QFile::remove(temporary);
    if (!QFile::link(zoneFile, temporary)
        || ::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(m_localtime).constData()) != 0) {
        QFile::remove(temporary);
        m_error = QStringLiteral("cannot replace %1").arg(m_localtime);
        return false;
    }
    QSaveFile name(m_timezoneFile);
    if (name.open(QIODevice::WriteOnly)) {
        name.write(zone.toUtf8() + '\n');
        name.commit();
    }
    return true;
}

bool TimezoneChanger::change(const QString& zone)
{
    m_error.clear();
    if (!isValidZoneName(zone)) {
        m_error = QStringLiteral("invalid zone name \"%1\"").arg(zone);
        return false;
    }
    if (!QFile::exists(savedFile())) {
        const QString own = currentZone();
        HelperPaths::makePrivateDir(m_stateDir);
        QSaveFile saved(savedFile());
        if (!saved.open(QIODevice::WriteOnly) || saved.write(own.toUtf8()) < 0 || !saved.commit()) {
            m_error = QStringLiteral("cannot remember the machine's zone");
            return false;
        }
    }
    return setZone(zone);
}

bool TimezoneChanger::restore()
{
    m_error.clear();
    QFile saved(savedFile());
    if (!saved.open(QIODevice::ReadOnly))
        return true; // never changed: nothing to put back
    const QString own = QString::fromUtf8(saved.readAll()).trimmed();
    saved.close();
    if (!own.isEmpty() && (!isValidZoneName(own) || !setZone(own)))
        return false;
    QFile::remove(savedFile());
    return true;
}
