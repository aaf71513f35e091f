#pragma once

#include "HelperPaths.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QString>
#include <QStringList>

// Decides whether an update package may be installed: its embedded origin signature (debsigs)
// must verify with debsig-verify under our policy for the vendor's key, and the signed package
// must be "tavrin", built for this machine's architecture and strictly newer than the version
// installed in the root dpkg installs into. Every program here reads the daemon's private copy,
// and each reads it the way dpkg will.
class PackageCheck
{
public:
    explicit PackageCheck(const HelperPaths& paths);

    // False with error() when the package must not be installed, or when the checks are not done
    // by the deadline. scratchDir must be private to root: debsig-verify keeps the signed data
    // there while it checks.
    bool accepts(const QString& package, const QString& scratchDir, const QDeadlineTimer& deadline);
    QString error() const { return m_error; }
    // What was accepted, for the log.
    QString summary() const { return m_summary; }

private:
    struct Output
    {
        int exitCode = -1;
        QByteArray out;
        QByteArray err;
    };
    bool run(const QString& program, const QStringList& arguments, Output& output);
    // The one printable word a program prints (a trailing line feed aside).
    bool word(const QString& program, const QStringList& arguments, const QString& what, QString& value);

    QString m_policies;
    QString m_keyrings;
    QString m_dpkgRoot;
    QString m_scratchDir;
    QDeadlineTimer m_deadline;
    QString m_error;
    QString m_summary;
};
