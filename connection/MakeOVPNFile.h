#pragma once

#include "ConfigServer.h"

#include <QByteArray>
#include <QString>
#include <QTemporaryFile>

// Writes the OpenVPN configuration file of one connection, certificate and key inline.
// The same temporary file (owner-only, removed with the object) is rewritten by every generation,
// until discard() removes it once the connection no longer needs it.
class MakeOVPNFile : public QTemporaryFile
{
    Q_OBJECT

public:
    MakeOVPNFile();

    // Direct OpenVPN over UDP or TCP.
    bool generate(const ConfigServer& server);
    // OpenVPN over TCP to the local stunnel client.
    bool generateStunnel(const ConfigServer& server);

    // Removes the file, which holds the private key; the next generation makes a new one under a
    // fresh name (never the old name again, which anyone could have put a link at meanwhile).
    void discard();
    // Removes the files a run that crashed left behind: regular files of this user named as these
    // temporary files are, in the temporary directory. Only one instance runs per user, so at its
    // start none of them is in use.
    static void removeLeftovers();

    // Extra per-server lines appended at the end of the file; none on this platform.
    QByteArray dnsEnvConfig(QString ip);

    QString configFileName;
    bool generated = false;

private:
    bool openTruncated();
    void writeTemplate(const QByteArray& config, const QStringList& markers);
    void writeCredentials(const ConfigServer& server);
    bool finish();
};
