#include "UpdateInstaller.h"

#include "HelperPaths.h"

#include "TrustedFile.h"

#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>

#include <unistd.h>

namespace {
// Our packages are a few MiB; anything far larger is refused by its size before a byte is copied.
constexpr qint64 MaxPackageSize = qint64(256) << 20;
// The client gives up on an answer after five seconds: the checks and systemd-run share this.
constexpr int AnswerWithinMs = 4000;
const QString UnitName = QStringLiteral("tavrin-helperd-update");

// Runs the command given after the package copy, then removes the copy; the journal gets dpkg's
// output and status either way.
const QString RunAndRemove
    = QStringLiteral("package=$1; shift; \"$@\"; status=$?; rm -f \"$package\"; "
                     "echo \"tavrin-helperd: dpkg exited with status $status\" >&2; exit $status");
// Without systemd no postinst restarts the daemon: once dpkg has succeeded, SIGHUP asks the daemon
// (by its pid, $2) to run the installed one in its place.
const QString RunRemoveAndRestart
    = QStringLiteral("package=$1; daemon=$2; shift 2; \"$@\"; status=$?; rm -f \"$package\"; "
                     "echo \"tavrin-helperd: dpkg exited with status $status\" >&2; "
                     "if [ $status -eq 0 ]; then kill -HUP \"$daemon\"; fi; exit $status");
} // namespace

UpdateInstaller::UpdateInstaller(const HelperPaths& paths)
    : m_stateDir(paths.stateDir)
    , m_systemdRunDir(paths.systemdRunDir)
    , m_dpkgRoot(paths.dpkgRoot)
    , m_check(paths)
{ }

QStringList UpdateInstaller::dpkgCommand(const QString& package, bool underSystemd) const
{
    QStringList command {QStringLiteral("/bin/sh"), QStringLiteral("-c")};
    if (underSystemd)
        command << RunAndRemove << QStringLiteral("sh") << package;
    else
        command << RunRemoveAndRestart << QStringLiteral("sh") << package << QString::number(::getpid());
    command << QStringLiteral("dpkg");
    if (!m_dpkgRoot.isEmpty())
        command << QStringLiteral("--root=") + m_dpkgRoot;
    // Nobody is there to answer a question about a changed configuration file.
    command << QStringLiteral("--force-confdef") << QStringLiteral("--force-confold") << QStringLiteral("-i")
            << package;
    return command;
}

bool UpdateInstaller::startUnderSystemd(const QStringList& command, const QDeadlineTimer& deadline)
{
    QProcess run;
    run.setProcessChannelMode(QProcess::SeparateChannels);
    run.start(QStringLiteral("systemd-run"),
              QStringList {QStringLiteral("--unit=") + UnitName,
                           QStringLiteral("--description=Tavrin update installation"),
                           QStringLiteral("--service-type=exec"),
                           QStringLiteral("--collect"),
                           QStringLiteral("--quiet"),
                           QStringLiteral("--no-ask-password"),
                           QStringLiteral("--")}
                  + command);
    if (!run.waitForStarted(int(deadline.remainingTime()))) {
        m_error = QStringLiteral("systemd-run cannot be started");
        return false;
    }
    if (!run.waitForFinished(int(deadline.remainingTime()))) {
        run.kill();
        run.waitForFinished(1000);
        m_error = QStringLiteral("systemd-run did not answer in time");
        return false;
    }
    if (run.exitStatus() != QProcess::NormalExit || run.exitCode() != 0) {
        m_error = QStringLiteral("systemd-run failed: %1")
                      .arg(QString::fromLocal8Bit(run.readAllStandardError()).simplified());
        return false;
    }
    return true;
}

bool UpdateInstaller::install(const QString& path, qint64 callerUid)
{
    m_error.clear();
    const QDeadlineTimer deadline(AnswerWithinMs);
    const QStringList parts = path.split(QLatin1Char('/'));
    if (!path.startsWith(QLatin1Char('/')) || !path.endsWith(QLatin1String(".deb"))
        || parts.contains(QStringLiteral("..")) || path.contains(QLatin1Char('\n'))) {
        m_error = QStringLiteral("not an absolute path to a .deb file: \"%1\"").arg(path);
        return false;
    }
    const QString dir = m_stateDir + QStringLiteral("/update");
    if (!HelperPaths::makePrivateDir(dir)) {
        m_error = QStringLiteral("cannot create %1").arg(dir);
        return false;
    }
    // A name of its own for each request: an install still running reads its copy by name again.
    const QString copy
        = QStringLiteral("%1/update-%2.deb")
              .arg(dir, QStringLiteral("%1").arg(QRandomGenerator::global()->generate64(), 16, 16, QLatin1Char('0')));
    TrustedFile source(path, callerUid);
    if (!source.copyTo(copy, MaxPackageSize)) {
        m_error = source.error();
        return false;
    }
    QElapsedTimer checking;
    checking.start();
    // debsig-verify's scratch files: gone afterwards even when it had to be killed.
    const QString scratch = dir + QStringLiteral("/verify");
    QDir(scratch).removeRecursively();
    if (!HelperPaths::makePrivateDir(scratch)) {
        QFile::remove(copy);
        m_error = QStringLiteral("cannot create %1").arg(scratch);
        return false;
    }
    const bool accepted = m_check.accepts(copy, scratch, deadline);
    QDir(scratch).removeRecursively();
    if (!accepted) {
        QFile::remove(copy);
        m_error = m_check.error();
        return false;
    }
    const qint64 checkedMs = checking.elapsed();

    const bool underSystemd = QFileInfo(m_systemdRunDir).isDir();
    QStringList command = dpkgCommand(copy, underSystemd);
    bool started;
    if (underSystemd) {
        started = startUnderSystemd(command, deadline);
    } else {
        // dpkg may replace the client, which waits for nothing.
        const QString program = command.takeFirst();
        started = QProcess::startDetached(program, command);
        if (!started)
            m_error = QStringLiteral("dpkg cannot be started");
    }
    if (!started) {
        QFile::remove(copy);
        return false;
    }
    qInfo().noquote()
        << QStringLiteral("update: %1 (checked in %2 ms); dpkg started").arg(m_check.summary()).arg(checkedMs)
        << (underSystemd ? QStringLiteral("as unit %1").arg(UnitName) : QStringLiteral("detached"))
        << (m_dpkgRoot.isEmpty() ? QString() : QStringLiteral("in root %1").arg(m_dpkgRoot));
    return true;
}
