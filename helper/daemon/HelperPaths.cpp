#include "HelperPaths.h"

#include <QDir>
#include <QFile>
#include <QProcessEnvironment>

#include <sys/stat.h>

HelperPaths HelperPaths::fromEnvironment()
{
    const QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    HelperPaths p;
    p.root = env.value(QStringLiteral("TAVRIN_HELPERD_ROOT"));
    while (p.root.endsWith(QLatin1Char('/')))
        p.root.chop(1);
    p.stateDir = p.root + QStringLiteral("/var/lib/tavrin-helperd");
    p.localtime = p.root + QStringLiteral("/etc/localtime");
    p.timezoneFile = p.root + QStringLiteral("/etc/timezone");
    p.systemdRunDir = p.root + QStringLiteral("/run/systemd/system");
    p.zoneinfoDir = QStringLiteral("/usr/share/zoneinfo");
    p.resolverScript = env.value(QStringLiteral("TAVRIN_HELPERD_SCRIPT"),
                                 QStringLiteral("/usr/share/tavrin/script/update-resolv-conf.sh"));
    p.dpkgRoot = env.value(QStringLiteral("TAVRIN_HELPERD_DPKG_ROOT"));
    p.installedDaemon = p.dpkgRoot + QStringLiteral(TAVRIN_HELPERD_INSTALLED);
    p.debsigPolicies = p.root + QStringLiteral("/etc/debsig/policies");
    p.debsigKeyrings = p.root + QStringLiteral("/usr/share/debsig/keyrings");
    return p;
}

bool HelperPaths::makePrivateDir(const QString& dir)
{
    return QDir().mkpath(dir) && ::chmod(QFile::encodeName(dir).constData(), 0700) == 0;
}
