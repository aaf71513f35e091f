// The update command: what the daemon refuses, how it starts dpkg with and without systemd, and
// (as root) the real package installed through it into a throw-away root, whose maintainer
// scripts run chrooted against stand-ins for systemctl, deb-systemd-helper and nft.

#include "WireClient.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

#include <unistd.h>

namespace {

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

bool write(const QString& path, const QByteArray& data, QFileDevice::Permissions mode = WireClient::Private)
{
    return QDir().mkpath(QFileInfo(path).path()) && WireClient::writeFile(path, data, mode);
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
    void startsDpkgOutsideTheDaemonsUnit();
    void installsAndPurgesThePackageInARoot();

private:
    QString path(const QString& name) const { return m_dir.filePath(name); }
    QString updateDir() const { return path(QStringLiteral("daemon/var/lib/tavrin-helperd/update")); }
    QStringList copies() const { return QDir(updateDir()).entryList(QDir::Files); }
    QString target(const QString& name = QString()) const { return path(QStringLiteral("target/")) + name; }
    void prepare(bool systemd);
    void prepareTarget(const QString& deb);

    QTemporaryDir m_dir;
    QProcess m_daemon;
    QByteArray m_log;
    quint16 m_port = WireClient::freePort();
};

void tst_UpdateInstall::initTestCase()
{
    // systemd-run as systemd would do it: the command after "--" runs on its own, away from the caller.
    QVERIFY(write(path(QStringLiteral("bin/systemd-run")),
                  QStringLiteral("#!/bin/sh\nprintf '%s\\n' \"$@\" > %1/systemd-run.args\n"
                                 "while [ \"$1\" != -- ]; do shift; done; shift\n"
                                 "setsid \"$@\" >> %1/unit.log 2>&1 < /dev/null &\n")
                      .arg(m_dir.path())
                      .toUtf8(),
                  WireClient::Program));
    QVERIFY(write(path(QStringLiteral("bin/dpkg")),
                  QStringLiteral("#!/bin/sh\necho \"$*\" > %1/dpkg.args\n").arg(m_dir.path()).toUtf8(),
                  WireClient::Program));
    const QByteArray deb = "!<arch>\ndebian-binary   1342943816  0     0     100644  4\n";
    QVERIFY(write(path(QStringLiteral("update.deb")), deb));
    QVERIFY(write(path(QStringLiteral("fake.deb")), "#!/bin/sh\nrm -rf /\n"));
    QVERIFY(write(path(QStringLiteral("open.deb")), deb, WireClient::Private | QFileDevice::WriteOther));
    QVERIFY(write(path(QStringLiteral("foreign.deb")), deb));
    QVERIFY(::chown(QFile::encodeName(path(QStringLiteral("foreign.deb"))).constData(), 65534, 65534) == 0
            || getuid() != 0);

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("PATH"), path(QStringLiteral("bin")) + QStringLiteral(":/usr/sbin:/usr/bin:/sbin:/bin"));
    env.insert(QStringLiteral("TAVRIN_HELPERD_ROOT"), path(QStringLiteral("daemon")));
    env.insert(QStringLiteral("TAVRIN_HELPERD_DPKG_ROOT"), target());
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

void tst_UpdateInstall::prepare(bool systemd)
{
    for (const char* file : {"dpkg.args", "systemd-run.args", "unit.log"})
        QFile::remove(path(QLatin1String(file)));
    const QString dir = path(QStringLiteral("daemon/run/systemd/system"));
    QVERIFY(systemd ? QDir().mkpath(dir) : (!QFileInfo::exists(dir) || QDir(dir).removeRecursively()));
    m_log.clear();
}

void tst_UpdateInstall::refusesBadPackages_data()
{
    QTest::addColumn<QString>("package");
    QTest::addColumn<QString>("error");

    const QString notADeb = QStringLiteral("not an absolute path to a .deb file: \"%1\"");
    QTest::newRow("path leaving its folder") << path(QStringLiteral("folder.deb/../update.deb")) << notADeb;
    QTest::newRow(".deb that is no package")
        << path(QStringLiteral("fake.deb")) << QStringLiteral("%1 is not a Debian package");
    QTest::newRow("writable by others") << path(QStringLiteral("open.deb")) << QStringLiteral("%1: writable by others");
    if (getuid() == 0) {
        QTest::newRow("another user's file")
            << path(QStringLiteral("foreign.deb")) << QStringLiteral("%1: owned by uid 65534, not by the caller (0)");
    }
}

void tst_UpdateInstall::refusesBadPackages()
{
    QFETCH(QString, package);
    QFETCH(QString, error);
    prepare(true);
    QCOMPARE(WireClient::result(m_port, WireClient::update(package)), 0);
    const QByteArray line
        = QStringLiteral("updateInstall package \"%1\": %2 -> refused").arg(package, error.arg(package)).toUtf8();
    QTRY_VERIFY2(m_log.contains(line), line.constData());
    QVERIFY(copies().isEmpty());
    QVERIFY(!QFile::exists(path(QStringLiteral("systemd-run.args"))));
    QVERIFY(!QFile::exists(path(QStringLiteral("dpkg.args"))));
}

void tst_UpdateInstall::startsDpkgOutsideTheDaemonsUnit()
{
    prepare(true);
    QCOMPARE(WireClient::result(m_port, WireClient::update(path(QStringLiteral("update.deb")))), 1);
    QTRY_VERIFY2(m_log.contains("update: dpkg started as unit tavrin-helperd-update in root"), m_log.constData());
    const QList<QByteArray> unit = WireClient::readFile(path(QStringLiteral("systemd-run.args"))).split('\n');
    QVERIFY(unit.contains("--collect"));
    QVERIFY(unit.contains("--unit=tavrin-helperd-update"));
    // The copy goes once dpkg is done with it.
    QTRY_VERIFY(copies().isEmpty());
    const QRegularExpression expected(QRegularExpression::anchoredPattern(
        QStringLiteral("--root=%1 --force-confdef --force-confold -i %2/update-[0-9a-f]{16}\\.deb")
            .arg(QRegularExpression::escape(target()), QRegularExpression::escape(updateDir()))));
    const QString args = QString::fromLocal8Bit(WireClient::readFile(path(QStringLiteral("dpkg.args"))).trimmed());
    QVERIFY2(expected.match(args).hasMatch(), qPrintable(args));
}

void tst_UpdateInstall::prepareTarget(const QString& deb)
{
    // What the maintainer scripts need: a shell, rm, and stand-ins that only record their calls.
    const QRegularExpression library(QStringLiteral("(/\\S+) \\(0x"));
    for (const QString& binary : {QStringLiteral("/bin/sh"), QStringLiteral("/bin/rm")}) {
        QStringList files {binary};
        for (auto it = library.globalMatch(QString::fromLocal8Bit(run(QStringLiteral("ldd"), {binary}))); it.hasNext();)
            files << it.next().captured(1);
        for (const QString& file : files) {
            QVERIFY(QDir().mkpath(QFileInfo(target(file)).path()));
            QVERIFY(QFile::exists(target(file)) || QFile::copy(QFileInfo(file).canonicalFilePath(), target(file)));
        }
    }
    QVERIFY(QDir().mkpath(target(QStringLiteral("dev"))));
    QVERIFY(QDir().mkpath(target(QStringLiteral("var/lib/dpkg/updates"))));
    for (const char* stub : {"usr/bin/systemctl",
                             "usr/bin/deb-systemd-helper",
                             "usr/bin/deb-systemd-invoke",
                             "usr/bin/systemd-run",
                             "usr/sbin/nft"}) {
        const QString name = QFileInfo(QLatin1String(stub)).fileName();
        QVERIFY(write(target(QLatin1String(stub)),
                      QStringLiteral("#!/bin/sh\necho \"%1 $*\" >> /stub-calls\n").arg(name).toUtf8(),
                      WireClient::Program));
    }
    // An empty package database but for the dependencies, marked installed at the host's versions.
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
        QVERIFY(write(target(QStringLiteral("var/lib/dpkg/info/%1.list").arg(QString::fromLatin1(name))), {}));
    }
    QVERIFY(write(target(QStringLiteral("var/lib/dpkg/status")), status));
}

void tst_UpdateInstall::installsAndPurgesThePackageInARoot()
{
    if (getuid() != 0)
        QSKIP("needs root: dpkg runs the package's maintainer scripts chrooted into the throw-away root");
    const QStringList debs = QDir(QStringLiteral(TAVRIN_PACKAGE_DIR)).entryList({QStringLiteral("tavrin_*_amd64.deb")});
    QVERIFY2(debs.size() == 1, "no package in " TAVRIN_PACKAGE_DIR ": the CTest test update_package builds it");
    const QString deb = QStringLiteral(TAVRIN_PACKAGE_DIR "/") + debs.first();
    prepareTarget(deb);
    if (QTest::currentTestFailed())
        return;
    // The real dpkg from here on, but never for the machine's own root.
    QVERIFY(write(path(QStringLiteral("bin/dpkg")),
                  QStringLiteral("#!/bin/sh\n[ \"$1\" = --root=%1 ] && exec /usr/bin/dpkg \"$@\"\n"
                                 "echo \"refused: dpkg $*\" >&2; exit 1\n")
                      .arg(target())
                      .toUtf8(),
                  WireClient::Program));
    // Installed by an older helper, dpkg runs in the helper's own unit: restarting the helper at
    // once would kill dpkg, so the restart waits for dpkg in a unit of its own.
    QVERIFY(write(target(QStringLiteral("proc/self/cgroup")), "0::/system.slice/tavrin-helperd.service\n"));
    QVERIFY(QDir().mkpath(target(QStringLiteral("run/systemd/system"))));
    const QString package = path(QStringLiteral("download/update.deb"));
    QVERIFY(QDir().mkpath(path(QStringLiteral("download"))) && QFile::copy(deb, package));
    prepare(false);

    QCOMPARE(WireClient::result(m_port, WireClient::update(package)), 1);
    QTRY_VERIFY_WITH_TIMEOUT(copies().isEmpty(), 120000);
    const auto output = [this] {
        return m_log + WireClient::readFile(path(QStringLiteral("unit.log")));
    };
    QTRY_VERIFY2(output().contains("dpkg exited with status 0"), output().constData());
    const QByteArray installed = run(QStringLiteral("dpkg-query"),
                                     {QStringLiteral("--admindir=") + target(QStringLiteral("var/lib/dpkg")),
                                      QStringLiteral("-W"),
                                      QStringLiteral("-f=${Status} ${Version}"),
                                      QStringLiteral("tavrin")});
    QCOMPARE(installed, QByteArray("install ok installed 3.6.9"));
    for (const char* file : {"usr/bin/tavrin",
                             "usr/sbin/tavrin-helperd",
                             "usr/lib/systemd/system/tavrin-helperd.service",
                             "usr/share/applications/tavrin.desktop",
                             "usr/share/icons/hicolor/scalable/apps/tavrin.svg"})
        QVERIFY2(QFileInfo(target(QLatin1String(file))).isFile(), file);
    QVERIFY(QFileInfo(target(QStringLiteral("usr/share/tavrin/script/update-resolv-conf.sh"))).isExecutable());
    QByteArray calls = WireClient::readFile(target(QStringLiteral("stub-calls")));
    QVERIFY2(calls.contains("deb-systemd-helper enable tavrin-helperd.service"), calls.constData());
    QVERIFY2(calls.contains("systemd-run --unit=tavrin-helperd-restart --collect --quiet /bin/sh -c"),
             calls.constData());
    const QList<QByteArray> lines = calls.split('\n');
    QCOMPARE(std::count_if(lines.begin(), lines.end(), [](const QByteArray& l) { return l.contains("restart"); }), 1);

    // Purged, the daemon stops and takes its firewall table and state with it.
    QVERIFY(write(target(QStringLiteral("var/lib/tavrin-helperd/firewall.rules")), "table inet tavrin {}\n"));
    QFile::remove(target(QStringLiteral("stub-calls")));
    int code = 0;
    const QByteArray purge
        = run(QStringLiteral("dpkg"),
              {QStringLiteral("--root=") + target(), QStringLiteral("--purge"), QStringLiteral("tavrin")},
              &code);
    QVERIFY2(code == 0, purge.constData());
    calls = WireClient::readFile(target(QStringLiteral("stub-calls")));
    QVERIFY2(calls.contains("nft delete table inet tavrin"), calls.constData());
    QVERIFY(!QFileInfo::exists(target(QStringLiteral("var/lib/tavrin-helperd"))));
}

QTEST_GUILESS_MAIN(tst_UpdateInstall)
#include "tst_UpdateInstall.moc"
