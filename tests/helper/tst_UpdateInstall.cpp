// The update command: what the daemon refuses, how it starts dpkg with and without systemd, and
// (as root) the real package installed through it into a throw-away root, whose maintainer
// scripts run chrooted against stand-ins for systemctl, deb-systemd-helper and nft.

#include "WireClient.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

#include <unistd.h>

namespace {

const QFileDevice::Permissions privateFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
const QFileDevice::Permissions program
    = privateFile | QFileDevice::ExeOwner | QFileDevice::ReadOther | QFileDevice::ExeOther;

bool writeFile(const QString& path, const QByteArray& data, QFileDevice::Permissions mode = privateFile)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(data) == data.size() && f.setPermissions(mode);
}

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QByteArray run(const QString& command, const QStringList& arguments, int* exitCode = nullptr)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("PATH"), QStringLiteral("/usr/sbin:/usr/bin:/sbin:/bin"));
    p.setProcessEnvironment(env);
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(command, arguments);
    p.waitForFinished(60000);
    if (exitCode)
        *exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    return p.readAll();
}

// A host program and the libraries it loads, copied to the same paths under root.
bool copyProgram(const QString& root, const QString& binary)
{
    const QByteArray libraries = run(QStringLiteral("ldd"), {binary});
    QStringList files {binary};
    const QRegularExpression absolute(QStringLiteral("(/\\S+) \\(0x"));
    for (auto it = absolute.globalMatch(QString::fromLocal8Bit(libraries)); it.hasNext();)
        files << it.next().captured(1);
    for (const QString& file : files) {
        const QString target = root + file;
        QDir().mkpath(QFileInfo(target).path());
        if (!QFile::exists(target) && !QFile::copy(QFileInfo(file).canonicalFilePath(), target))
            return false;
    }
    return true;
}

} // namespace

class tst_UpdateInstall : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void refusesBadPackages_data();
    void refusesBadPackages();
    void startsDpkgOutsideTheDaemonsUnit_data();
    void startsDpkgOutsideTheDaemonsUnit();
    void installsThePackageIntoARoot_data();
    void installsThePackageIntoARoot();
    void purgeStopsTheDaemonAndDropsTheFirewall();

private:
    QString path(const QString& name) const { return m_dir.path() + QLatin1Char('/') + name; }
    QString updateDir() const { return path(QStringLiteral("daemon/var/lib/tavrin-helperd/update")); }
    QStringList copies() const { return QDir(updateDir()).entryList(QDir::Files); }
    QString target(const QString& name = QString()) const { return path(QStringLiteral("target/")) + name; }
    void setSystemd(bool running);
    void prepareTarget(const QString& deb);
    QByteArray stubCalls() const { return readAll(target(QStringLiteral("stub-calls"))); }

    QTemporaryDir m_dir;
    QProcess m_daemon;
    QByteArray m_log;
    quint16 m_port = 0;
};

void tst_UpdateInstall::initTestCase()
{
    QVERIFY(m_dir.isValid());
    QVERIFY(QDir().mkpath(path(QStringLiteral("daemon"))));
    // systemd-run as systemd would do it: the command after "--" runs on its own, away from the
    // caller. Its exit code comes from systemd-run.exit when that exists.
    QVERIFY(writeFile(path(QStringLiteral("bin/systemd-run")),
                      QStringLiteral("#!/bin/sh\n"
                                     "printf '%s\\n' \"$@\" > %1/systemd-run.args\n"
                                     "if [ -e %1/systemd-run.exit ]; then\n"
                                     "  echo 'Failed to start transient service unit: Unit "
                                     "tavrin-helperd-update.service already exists.' >&2\n"
                                     "  exit $(cat %1/systemd-run.exit)\n"
                                     "fi\n"
                                     "while [ \"$1\" != -- ]; do shift; done; shift\n"
                                     "setsid \"$@\" >> %1/unit.log 2>&1 < /dev/null &\n")
                          .arg(m_dir.path())
                          .toUtf8(),
                      program));
    QVERIFY(writeFile(path(QStringLiteral("bin/dpkg")),
                      QStringLiteral("#!/bin/sh\necho \"$*\" > %1/dpkg.args\n").arg(m_dir.path()).toUtf8(),
                      program));

    QVERIFY(
        writeFile(path(QStringLiteral("update.deb")), "!<arch>\ndebian-binary   1342943816  0     0     100644  4\n"));
    QVERIFY(writeFile(path(QStringLiteral("fake.deb")), "#!/bin/sh\nrm -rf /\n"));
    QVERIFY(writeFile(path(QStringLiteral("update.sh")), "!<arch>\ndebian-binary\n"));
    QVERIFY(writeFile(path(QStringLiteral("open.deb")),
                      readAll(path(QStringLiteral("update.deb"))),
                      privateFile | QFileDevice::WriteOther));
    QVERIFY(writeFile(path(QStringLiteral("foreign.deb")), readAll(path(QStringLiteral("update.deb")))));
    QVERIFY(::chown(QFile::encodeName(path(QStringLiteral("foreign.deb"))).constData(), 65534, 65534) == 0
            || getuid() != 0);
    QVERIFY(QFile::link(path(QStringLiteral("update.deb")), path(QStringLiteral("link.deb"))));
    QVERIFY(QDir().mkpath(path(QStringLiteral("folder.deb"))));

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("PATH"), path(QStringLiteral("bin")) + QStringLiteral(":/usr/sbin:/usr/bin:/sbin:/bin"));
    env.insert(QStringLiteral("TAVRIN_HELPERD_ROOT"), path(QStringLiteral("daemon")));
    env.insert(QStringLiteral("TAVRIN_HELPERD_DPKG_ROOT"), target());
    m_port = WireClient::freePort();
    connect(&m_daemon, &QProcess::readyRead, this, [this] { m_log += m_daemon.readAll(); });
    m_daemon.setProcessEnvironment(env);
    m_daemon.setProcessChannelMode(QProcess::MergedChannels);
    m_daemon.start(QStringLiteral(TAVRIN_HELPERD_PATH), {QStringLiteral("--port"), QString::number(m_port)});
    QVERIFY(m_daemon.waitForStarted());
    QTRY_VERIFY(m_log.contains("listening on 127.0.0.1"));
}

void tst_UpdateInstall::cleanupTestCase()
{
    m_daemon.terminate();
    QVERIFY(m_daemon.waitForFinished(10000));
}

void tst_UpdateInstall::setSystemd(bool running)
{
    const QString dir = path(QStringLiteral("daemon/run/systemd/system"));
    QVERIFY(running ? QDir().mkpath(dir) : (!QFileInfo::exists(dir) || QDir(dir).removeRecursively()));
}

void tst_UpdateInstall::refusesBadPackages_data()
{
    QTest::addColumn<QString>("package");
    QTest::addColumn<QString>("error");

    const QString notADeb = QStringLiteral("not an absolute path to a .deb file: \"%1\"");
    const QString notRegular = QStringLiteral("%1: missing or not a regular file");
    QTest::newRow("not a .deb") << path(QStringLiteral("update.sh")) << notADeb;
    QTest::newRow("relative path") << QStringLiteral("update.deb") << notADeb;
    QTest::newRow("path leaving its folder") << path(QStringLiteral("folder.deb/../update.deb")) << notADeb;
    QTest::newRow(".deb that is no package")
        << path(QStringLiteral("fake.deb")) << QStringLiteral("%1 is not a Debian package");
    QTest::newRow("link to a package") << path(QStringLiteral("link.deb")) << notRegular;
    QTest::newRow("folder named .deb") << path(QStringLiteral("folder.deb")) << notRegular;
    QTest::newRow("missing file") << path(QStringLiteral("gone.deb")) << notRegular;
    QTest::newRow("writable by others") << path(QStringLiteral("open.deb")) << QStringLiteral("%1: writable by others");
    if (getuid() == 0) {
        QTest::newRow("another user's file") << path(QStringLiteral("foreign.deb"))
                                             << QStringLiteral("%1: owned by uid 65534, not by the caller (0) or root");
    }
}

void tst_UpdateInstall::refusesBadPackages()
{
    QFETCH(QString, package);
    QFETCH(QString, error);
    QFile::remove(path(QStringLiteral("dpkg.args")));
    QFile::remove(path(QStringLiteral("systemd-run.args")));
    setSystemd(true);

    QCOMPARE(WireClient::result(m_port, WireClient::update(package)), 0);
    const QByteArray line
        = QStringLiteral("updateInstall package \"%1\": %2 -> refused").arg(package, error.arg(package)).toUtf8();
    QTRY_VERIFY2(m_log.contains(line), line.constData());
    QVERIFY(copies().isEmpty());
    QVERIFY(!QFile::exists(path(QStringLiteral("systemd-run.args"))));
    QVERIFY(!QFile::exists(path(QStringLiteral("dpkg.args"))));
}

void tst_UpdateInstall::startsDpkgOutsideTheDaemonsUnit_data()
{
    QTest::addColumn<bool>("systemd");
    QTest::addColumn<bool>("systemdRunFails");
    QTest::addColumn<QByteArray>("logged");

    QTest::newRow("without systemd: detached") << false << false << QByteArray("update: dpkg started detached in root");
    QTest::newRow("under systemd: a transient unit")
        << true << false << QByteArray("update: dpkg started as unit tavrin-helperd-update in root");
    QTest::newRow("systemd-run refuses") << true << true
                                         << QByteArray(
                                                "systemd-run failed: Failed to start transient service unit: Unit "
                                                "tavrin-helperd-update.service already exists. -> refused");
}

void tst_UpdateInstall::startsDpkgOutsideTheDaemonsUnit()
{
    QFETCH(bool, systemd);
    QFETCH(bool, systemdRunFails);
    QFETCH(QByteArray, logged);
    QFile::remove(path(QStringLiteral("dpkg.args")));
    QFile::remove(path(QStringLiteral("systemd-run.args")));
    if (systemdRunFails)
        QVERIFY(writeFile(path(QStringLiteral("systemd-run.exit")), "1\n"));
    setSystemd(systemd);
    m_log.clear();

    const int result = WireClient::result(m_port, WireClient::update(path(QStringLiteral("update.deb"))));
    QFile::remove(path(QStringLiteral("systemd-run.exit")));
    QCOMPARE(result, systemdRunFails ? 0 : 1);
    QTRY_VERIFY2(m_log.contains(logged), m_log.constData());

    const QList<QByteArray> unit = readAll(path(QStringLiteral("systemd-run.args"))).split('\n');
    QCOMPARE(unit.contains("--collect"), systemd);
    QCOMPARE(unit.contains("--unit=tavrin-helperd-update"), systemd);
    if (systemdRunFails) {
        QVERIFY(copies().isEmpty());
        return;
    }
    // The copy goes once dpkg is done with it.
    QTRY_VERIFY(copies().isEmpty());
    const QRegularExpression expected(QRegularExpression::anchoredPattern(
        QStringLiteral("--root=%1 --force-confdef --force-confold -i %2/update-[0-9a-f]{16}\\.deb")
            .arg(QRegularExpression::escape(target()), QRegularExpression::escape(updateDir()))));
    const QString args = QString::fromLocal8Bit(readAll(path(QStringLiteral("dpkg.args"))).trimmed());
    QVERIFY2(expected.match(args).hasMatch(), qPrintable(args));
}

void tst_UpdateInstall::prepareTarget(const QString& deb)
{
    // What the maintainer scripts need: a shell, rm, and stand-ins that only record their calls.
    QVERIFY(copyProgram(target(), QStringLiteral("/bin/sh")));
    QVERIFY(copyProgram(target(), QStringLiteral("/bin/rm")));
    QVERIFY(QDir().mkpath(target(QStringLiteral("dev"))));
    QVERIFY(QDir().mkpath(target(QStringLiteral("run/systemd/system"))));
    const QStringList stubs {QStringLiteral("usr/bin/systemctl"),
                             QStringLiteral("usr/bin/deb-systemd-helper"),
                             QStringLiteral("usr/bin/deb-systemd-invoke"),
                             QStringLiteral("usr/bin/systemd-run"),
                             QStringLiteral("usr/sbin/nft")};
    for (const QString& stub : stubs) {
        QVERIFY(writeFile(
            target(stub),
            QStringLiteral("#!/bin/sh\necho \"%1 $*\" >> /stub-calls\n").arg(QFileInfo(stub).fileName()).toUtf8(),
            program));
    }

    // An empty package database but for the dependencies, marked installed at the host's versions.
    QVERIFY(QDir().mkpath(target(QStringLiteral("var/lib/dpkg/info"))));
    QVERIFY(QDir().mkpath(target(QStringLiteral("var/lib/dpkg/updates"))));
    QByteArray status;
    const QByteArray depends = run(QStringLiteral("dpkg-deb"), {QStringLiteral("-f"), deb, QStringLiteral("Depends")});
    for (const QByteArray& dependency : depends.split(',')) {
        const QByteArray name = dependency.trimmed().split('|').first().trimmed().split(' ').first();
        int code = 0;
        const QByteArray version
            = run(QStringLiteral("dpkg-query"),
                  {QStringLiteral("-W"), QStringLiteral("-f=${Version}"), QString::fromLatin1(name)},
                  &code);
        QVERIFY2(code == 0, ("dependency " + name + " is not installed here").constData());
        status += "Package: " + name + "\nStatus: install ok installed\nVersion: " + version
            + "\nArchitecture: amd64\nMaintainer: nobody <nobody@localhost>\nDescription: stand-in\n\n";
        QVERIFY(writeFile(target(QStringLiteral("var/lib/dpkg/info/%1.list").arg(QString::fromLatin1(name))), {}));
    }
    QVERIFY(writeFile(target(QStringLiteral("var/lib/dpkg/status")), status));
}

void tst_UpdateInstall::installsThePackageIntoARoot_data()
{
    QTest::addColumn<bool>("systemd");
    QTest::addColumn<QByteArray>("cgroup"); // of the maintainer scripts, seen by postinst
    QTest::addColumn<QByteArray>("restart");

    const QByteArray direct = "deb-systemd-invoke restart tavrin-helperd.service";
    QTest::newRow("first install, started detached") << false << QByteArray() << direct;
    QTest::newRow("reinstall over it, as a transient unit")
        << true << QByteArray("0::/system.slice/tavrin-helperd-update.service\n") << direct;
    // Restarting there at once would kill dpkg: the restart waits for dpkg in a unit of its own.
    QTest::newRow("reinstall by an older helper, dpkg in the helper's unit")
        << false << QByteArray("0::/system.slice/tavrin-helperd.service\n")
        << QByteArray("systemd-run --unit=tavrin-helperd-restart --collect --quiet /bin/sh -c");
}

void tst_UpdateInstall::installsThePackageIntoARoot()
{
    if (getuid() != 0)
        QSKIP("needs root: dpkg runs the package's maintainer scripts chrooted into the throw-away root");
    QFETCH(bool, systemd);
    QFETCH(QByteArray, cgroup);
    QFETCH(QByteArray, restart);
    const QStringList debs = QDir(QStringLiteral(TAVRIN_PACKAGE_DIR)).entryList({QStringLiteral("tavrin_*_amd64.deb")});
    QVERIFY2(debs.size() == 1, "no package in " TAVRIN_PACKAGE_DIR ": the CTest test update_package builds it");
    const QString deb = QStringLiteral(TAVRIN_PACKAGE_DIR "/") + debs.first();
    if (!QFileInfo::exists(target(QStringLiteral("var/lib/dpkg/status")))) {
        prepareTarget(deb);
        if (QTest::currentTestFailed())
            return;
    }
    // The real dpkg from here on, but never for the machine's own root.
    QVERIFY(writeFile(path(QStringLiteral("bin/dpkg")),
                      QStringLiteral("#!/bin/sh\n[ \"$1\" = --root=%1 ] && exec /usr/bin/dpkg \"$@\"\n"
                                     "echo \"refused: dpkg $*\" >&2; exit 1\n")
                          .arg(target())
                          .toUtf8(),
                      program));
    QFile::remove(target(QStringLiteral("stub-calls")));
    QFile::remove(path(QStringLiteral("unit.log")));
    QFile::remove(target(QStringLiteral("proc/self/cgroup")));
    if (!cgroup.isEmpty())
        QVERIFY(writeFile(target(QStringLiteral("proc/self/cgroup")), cgroup));
    const QString package = path(QStringLiteral("download/update.deb"));
    QFile::remove(package);
    QVERIFY(QDir().mkpath(path(QStringLiteral("download"))));
    QVERIFY(QFile::copy(deb, package));
    setSystemd(systemd);
    m_log.clear();

    QCOMPARE(WireClient::result(m_port, WireClient::update(package)), 1);
    QTRY_VERIFY_WITH_TIMEOUT(copies().isEmpty(), 120000);
    const auto output = [this] {
        return m_log + readAll(path(QStringLiteral("unit.log")));
    };
    QTRY_VERIFY2(output().contains("dpkg exited with status 0"), output().constData());

    const QByteArray installed = run(QStringLiteral("dpkg-query"),
                                     {QStringLiteral("--admindir=") + target(QStringLiteral("var/lib/dpkg")),
                                      QStringLiteral("-W"),
                                      QStringLiteral("-f=${Status} ${Version}"),
                                      QStringLiteral("tavrin")});
    QCOMPARE(installed, QByteArray("install ok installed 3.6.9"));
    const QStringList files {QStringLiteral("usr/bin/tavrin"),
                             QStringLiteral("usr/sbin/tavrin-helperd"),
                             QStringLiteral("usr/lib/systemd/system/tavrin-helperd.service"),
                             QStringLiteral("usr/share/tavrin/script/update-resolv-conf.sh"),
                             QStringLiteral("usr/share/applications/tavrin.desktop"),
                             QStringLiteral("usr/share/icons/hicolor/scalable/apps/tavrin.svg")};
    for (const QString& file : files)
        QVERIFY2(QFileInfo(target(file)).isFile(), qPrintable(file));
    QVERIFY(QFileInfo(target(QStringLiteral("usr/share/tavrin/script/update-resolv-conf.sh"))).isExecutable());
    QVERIFY(readAll(target(QStringLiteral("usr/lib/systemd/system/tavrin-helperd.service")))
                .contains("ExecStart=/usr/sbin/tavrin-helperd"));
    const QByteArray calls = stubCalls();
    QVERIFY2(calls.contains("deb-systemd-helper enable tavrin-helperd.service"), calls.constData());
    QVERIFY2(calls.contains(restart), calls.constData());
    const QList<QByteArray> lines = calls.split('\n');
    QCOMPARE(std::count_if(lines.begin(), lines.end(), [](const QByteArray& l) { return l.contains("restart"); }), 1);
}

void tst_UpdateInstall::purgeStopsTheDaemonAndDropsTheFirewall()
{
    if (getuid() != 0)
        QSKIP("needs root: dpkg runs the package's maintainer scripts chrooted into the throw-away root");
    QVERIFY(QFileInfo::exists(target(QStringLiteral("usr/sbin/tavrin-helperd"))));
    QVERIFY(writeFile(target(QStringLiteral("var/lib/tavrin-helperd/firewall.rules")), "table inet tavrin {}\n"));
    QFile::remove(target(QStringLiteral("stub-calls")));

    int code = 0;
    const QByteArray output
        = run(QStringLiteral("dpkg"),
              {QStringLiteral("--root=") + target(), QStringLiteral("--purge"), QStringLiteral("tavrin")},
              &code);
    QVERIFY2(code == 0, output.constData());
    const QByteArray calls = stubCalls();
    for (const char* call : {"deb-systemd-invoke stop tavrin-helperd.service",
                             "nft delete table inet tavrin",
                             "deb-systemd-helper disable tavrin-helperd.service",
                             "deb-systemd-helper purge tavrin-helperd.service"})
        QVERIFY2(calls.contains(call), call);
    QVERIFY(!QFileInfo::exists(target(QStringLiteral("usr/sbin/tavrin-helperd"))));
    QVERIFY(!QFileInfo::exists(target(QStringLiteral("var/lib/tavrin-helperd"))));
}

QTEST_GUILESS_MAIN(tst_UpdateInstall)
#include "tst_UpdateInstall.moc"
