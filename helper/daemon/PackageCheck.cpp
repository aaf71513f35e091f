#include "PackageCheck.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>

namespace {
const QString Product = QStringLiteral("tavrin");
// The policy our package installs for the vendor's key. Asking for it by name keeps a key that
// only another vendor's policy on this machine trusts from vouching for a package called tavrin.
const QString Policy = QStringLiteral("tavrin.pol");

QString shown(const QByteArray& bytes)
{
    return QString::fromLocal8Bit(bytes).simplified();
}
} // namespace

PackageCheck::PackageCheck(const HelperPaths& paths)
    : m_policies(paths.debsigPolicies)
    , m_keyrings(paths.debsigKeyrings)
    , m_dpkgRoot(paths.dpkgRoot)
{ }

bool PackageCheck::run(const QString& program, const QStringList& arguments, Output& output)
{
    if (m_deadline.hasExpired()) {
        m_error = QStringLiteral("no time left to run %1").arg(program);
        return false;
    }
    QProcessEnvironment env;
    env.insert(QStringLiteral("PATH"),
               QProcessEnvironment::systemEnvironment().value(QStringLiteral("PATH"),
                                                              QStringLiteral("/usr/sbin:/usr/bin:/sbin:/bin")));
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    env.insert(QStringLiteral("TMPDIR"), m_scratchDir);
    QProcess process;
    process.setProcessEnvironment(env);
    process.start(program, arguments);
    if (!process.waitForStarted(int(m_deadline.remainingTime()))) {
        process.kill();
        process.waitForFinished(1000);
        m_error = QStringLiteral("%1 cannot be started").arg(program);
        return false;
    }
    if (!process.waitForFinished(int(m_deadline.remainingTime()))) {
        process.kill();
        process.waitForFinished(1000);
        m_error = QStringLiteral("%1 did not finish in time").arg(program);
        return false;
    }
    output.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    output.out = process.readAllStandardOutput();
    output.err = process.readAllStandardError();
    return true;
}

bool PackageCheck::word(const QString& program, const QStringList& arguments, const QString& what, QString& value)
{
    Output o;
    if (!run(program, arguments, o))
        return false;
    if (o.out.endsWith('\n'))
        o.out.chop(1);
    static const QRegularExpression printable(QRegularExpression::anchoredPattern(QStringLiteral("[!-~]+")));
    value = QString::fromLatin1(o.out);
    if (o.exitCode != 0 || !printable.match(value).hasMatch()) {
        m_error = QStringLiteral("cannot read %1: \"%2\" (%3 exit %4: %5)")
                      .arg(what, value, program)
                      .arg(o.exitCode)
                      .arg(shown(o.err));
        return false;
    }
    return true;
}

bool PackageCheck::accepts(const QString& package, const QString& scratchDir, const QDeadlineTimer& deadline)
{
    m_scratchDir = scratchDir;
    m_deadline = deadline;
    m_error.clear();
    m_summary.clear();
    Output o;
    if (!run(QStringLiteral("debsig-verify"),
             {QStringLiteral("--policies-dir"),
              m_policies,
              QStringLiteral("--keyrings-dir"),
              m_keyrings,
              QStringLiteral("--use-policy"),
              Policy,
              package},
             o))
        return false;
    if (o.exitCode != 0) {
        m_error = QStringLiteral("not signed by the vendor (debsig-verify exit %1: %2)")
                      .arg(o.exitCode)
                      .arg(shown(o.out + ' ' + o.err));
        return false;
    }

    // The signature vouches for the contents; what they say decides the rest.
    const auto field = [&](const QString& name, QString& value) {
        return word(QStringLiteral("dpkg-deb"),
                    {QStringLiteral("--field"), package, name},
                    QStringLiteral("the package's %1 field").arg(name),
                    value);
    };
    QString name, version, architecture, machine, installed;
    if (!field(QStringLiteral("Package"), name) || !field(QStringLiteral("Version"), version)
        || !field(QStringLiteral("Architecture"), architecture))
        return false;
    if (name != Product) {
        m_error = QStringLiteral("the package is \"%1\", not %2").arg(name, Product);
        return false;
    }
    if (!word(QStringLiteral("dpkg"),
              {QStringLiteral("--print-architecture")},
              QStringLiteral("this machine's architecture"),
              machine))
        return false;
    if (architecture != machine) {
        m_error = QStringLiteral("the package is built for %1, not for this machine's %2").arg(architecture, machine);
        return false;
    }
    QStringList query;
    if (!m_dpkgRoot.isEmpty())
        query << QStringLiteral("--root=") + m_dpkgRoot;
    query << QStringLiteral("-W") << QStringLiteral("-f=${Version}") << Product;
    if (!word(QStringLiteral("dpkg-query"), query, QStringLiteral("the installed version"), installed))
        return false;
    // dpkg only warns about a malformed version and compares it all the same; a leading digit
    // also keeps a version from being read as an option.
    static const QRegularExpression syntax(
        QRegularExpression::anchoredPattern(QStringLiteral("[0-9][A-Za-z0-9.+~:-]*")));
    if (!syntax.match(version).hasMatch()) {
        m_error = QStringLiteral("version \"%1\" is not a Debian version").arg(version);
        return false;
    }
    if (!run(QStringLiteral("dpkg"),
             {QStringLiteral("--compare-versions"), version, QStringLiteral("gt"), installed},
             o))
        return false;
    if (o.exitCode != 0 || !o.err.isEmpty()) {
        m_error = QStringLiteral("version %1 is not newer than the installed %2%3")
                      .arg(version, installed, o.err.isEmpty() ? QString() : QStringLiteral(": ") + shown(o.err));
        return false;
    }
    m_summary = QStringLiteral("%1 %2 signed by the vendor, newer than %3").arg(name, version, installed);
    return true;
}
