#pragma once

#include <QString>

// Points the local-time link at a zone of the zoneinfo database. The machine's own zone is
// remembered in the state directory before the first change and put back on restore.
class TimezoneChanger
{
public:
    TimezoneChanger(const QString& localtime,
                    const QString& timezoneFile,
                    const QString& zoneinfoDir,
                    const QString& stateDir);

    bool supported() const;
    bool change(const QString& zone);
    bool restore();
    QString error() const { return m_error; }

    // A name of the database: relative, no "." or ".." part, only the characters zone names use.
    static bool isValidZoneName(const QString& zone);

private:
    QString currentZone() const;
    bool setZone(const QString& zone);
    QString savedFile() const;

    QString m_localtime;
    QString m_timezoneFile;
    QString m_zoneinfoDir;
    QString m_stateDir;
    QString m_error;
};
