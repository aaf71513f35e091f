// The update command through the real daemon, which installs with the real dpkg into a
// throw-away root: only a package signed with the vendor's key (a throw-away one made here), named
// tavrin, for this architecture and newer than the installed version gets there; dpkg runs outside
// the daemon's unit under systemd and detached without it. As root, the real package's maintainer
// scripts run chrooted in that root against stand-ins for systemctl, deb-systemd-helper and nft.

#include "WireClient.h"

#include <QtTest>

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

// packaging/update-key.sh, with the gpg home it signs from.
bool updateKey(const QStringList& arguments, QString* out = nullptr, const QString& gnupgHome = QString())
{
    int code = 0;
    const QStringList command {"GNUPGHOME=" + gnupgHome, TAVRIN_UPDATE_KEY_SCRIPT};
    const QByteArray output = run(QStringLiteral("env"), command + arguments, &code);
    if (out)
        *out = QString::fromLatin1(output.trimmed());
    return code == 0;
}

const QString Installed = QStringLiteral("3.6.9");

} // namespace

class tst_UpdateInstall : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QProcess m_daemon;
    QByteArray m_log;
    quint16 m_port = WireClient::freePort();
    QString m_architecture;
    QString m_vendorKey;
    QString m_otherKey;

    QString path(const QString& name) const { return m_dir.filePath(name); }
    QString updateDir() const { return path(QStringLiteral("daemon/var/lib/tavrin-helperd/update")); }
    QStringList copies() const { return QDir(updateDir()).entryList(QDir::Files); }
    QString target(const QString& name = QString()) const { return path(QStringLiteral("target/")) + name; }
    QByteArray installed() const
    {
        return run(QStringLiteral("dpkg-query"),
                   {"--admindir=" + target(QStringLiteral("var/lib/dpkg")), "-W", "-f=${Status} ${Version}", "tavrin"});
    }

    void prepare(bool systemd)
    {
        for (const char* file : {"systemd-run.args", "unit.log"})
            QFile::remove(path(QLatin1String(file)));
        const QString dir = path(QStringLiteral("daemon/run/systemd/system"));
        QVERIFY(systemd ? QDir().mkpath(dir) : (!QFileInfo::exists(dir) || QDir(dir).removeRecursively()));
        m_log.clear();
    }

    void makePackage(const QString& file,
                     const QString& version,
                     const QString& signer,
                     const QString& name = QStringLiteral("tavrin"),
                     const QString& architecture = QString())
    {
        const QString tree = path(QStringLiteral("trees/") + file);
        QVERIFY(write(tree + QStringLiteral("/DEBIAN/control"),
                      QStringLiteral("Package: %1\nVersion: %2\nArchitecture: %3\nMaintainer: Tavrin tests "
                                     "<tests@tavrin.invalid>\nDescription: stand-in update\n")
                          .arg(name, version, architecture.isEmpty() ? m_architecture : architecture)
                          .toUtf8(),
                      WireClient::Program));
        QVERIFY(write(tree + QStringLiteral("/usr/share/doc/tavrin-test/") + file, file.toUtf8(), WireClient::Program));
        const QString deb = path(QStringLiteral("packages/") + file);
        QVERIFY(QDir().mkpath(path(QStringLiteral("packages"))));
        int code = 0;
        const QByteArray built = run(QStringLiteral("dpkg-deb"), {"--root-owner-group", "-b", tree, deb}, &code);
        QVERIFY2(code == 0 && QFile::setPermissions(deb, WireClient::Private), built.constData());
        if (!signer.isEmpty()) {
            const QString home
                = path(signer == m_vendorKey ? QStringLiteral("vendor-key") : QStringLiteral("other-key"));
            QVERIFY(updateKey({QStringLiteral("sign"), signer, deb}, nullptr, home));
        }
    }

    // A fresh root whose dpkg database holds tavrin at version and the given other entries.
    void resetTarget(const QString& version, const QByteArray& otherPackages = QByteArray())
    {
        QVERIFY(!QFileInfo::exists(target()) || QDir(target()).removeRecursively());
        QVERIFY(QDir().mkpath(target(QStringLiteral("var/lib/dpkg/updates"))));
        QVERIFY(write(target(QStringLiteral("var/lib/dpkg/info/tavrin.list")), {}));
        const QByteArray tavrin = "Package: tavrin\nStatus: install ok installed\nVersion: " + version.toLatin1()
            + "\nArchitecture: " + m_architecture.toLatin1()
            + "\nMaintainer: nobody <nobody@localhost>\nDescription: installed\n\n";
        QVERIFY(write(target(QStringLiteral("var/lib/dpkg/status")), otherPackages + tavrin));
    }

    void prepareTarget(const QString& deb)
    {
        // A package database with an older tavrin and its dependencies at the host's versions.
        QByteArray status;
        QStringList dependencies;
        const QByteArray depends = run(QStringLiteral("dpkg-deb"), {"-f", deb, "Depends"});
        for (const QByteArray& dependency : depends.split(',')) {
            const QByteArray name = dependency.trimmed().split('|').first().trimmed().split(' ').first();
            int code = 0;
            const QByteArray version
                = run(QStringLiteral("dpkg-query"), {"-W", "-f=${Version}", QString::fromLatin1(name)}, &code);
            QVERIFY2(code == 0, ("dependency " + name + " is not installed here").constData());
            status += "Package: " + name + "\nStatus: install ok installed\nVersion: " + version
                + "\nArchitecture: amd64\nMaintainer: nobody <nobody@localhost>\nDescription: stand-in\n\n";
            dependencies << QString::fromLatin1(name);
        }
        resetTarget(QStringLiteral("3.6.8"), status);
        for (const QString& name : dependencies)
            QVERIFY(write(target(QStringLiteral("var/lib/dpkg/info/%1.list").arg(name)), {}));
        // What the maintainer scripts need: a shell, rm, and stand-ins that only record their calls.
        const QRegularExpression library(QStringLiteral("(/\\S+) \\(0x"));
        for (const QString& binary : {QStringLiteral("/bin/sh"), QStringLiteral("/bin/rm")}) {
            QStringList files {binary};
            for (auto it = library.globalMatch(QString::fromLocal8Bit(run(QStringLiteral("ldd"), {binary})));
                 it.hasNext();)
                files << it.next().captured(1);
            for (const QString& file : files) {
                QVERIFY(QDir().mkpath(QFileInfo(target(file)).path()));
                QVERIFY(QFile::exists(target(file)) || QFile::copy(QFileInfo(file).canonicalFilePath(), target(file)));
            }
        }
        QVERIFY(QDir().mkpath(target(QStringLiteral("dev"))));
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
    }

private slots:
    void initTestCase()
    {
        // Stand-ins first on the daemon's PATH; %1 in their text is the test's directory.
        const auto program = [this](const char* name, const QString& text) {
            return write(path(QStringLiteral("bin/") + QLatin1String(name)),
                         text.arg(m_dir.path()).toUtf8(),
                         WireClient::Program);
        };
        // systemd-run as systemd would do it: the command after "--" runs on its own, away from the caller.
        QVERIFY(program("systemd-run",
                        QStringLiteral("#!/bin/sh\nprintf '%s\\n' \"$@\" > %1/systemd-run.args\n"
                                       "while [ \"$1\" != -- ]; do shift; done; shift\n"
                                       "setsid \"$@\" >> %1/unit.log 2>&1 < /dev/null &\n")));
        // The real dpkg, but never for the machine's own root.
        QVERIFY(program("dpkg",
                        QStringLiteral("#!/bin/sh\ncase \"$1\" in --root=%1/target/|--print-architecture|"
                                       "--compare-versions)\nexec /usr/bin/dpkg \"$@\";; esac\n"
                                       "echo \"refused: dpkg $*\" >&2; exit 1\n")));
        // The real debsig-verify, run while the caller swaps the file it named, as a racing attacker would.
        QVERIFY(program("debsig-verify",
                        QStringLiteral("#!/bin/sh\n[ -e %1/swap.deb ] && mv -f %1/swap.deb %1/packages/swapped.deb\n"
                                       "exec /usr/bin/debsig-verify \"$@\"\n")));
        m_architecture = QString::fromLatin1(run(QStringLiteral("dpkg"), {"--print-architecture"}).trimmed());
        QVERIFY(updateKey({QStringLiteral("new"), path(QStringLiteral("vendor-key"))}, &m_vendorKey));
        QVERIFY(updateKey({QStringLiteral("new"), path(QStringLiteral("other-key"))}, &m_otherKey));
        QVERIFY(updateKey({"trust", path(QStringLiteral("vendor-key/public.gpg")), path(QStringLiteral("daemon"))}));

        const QString newer = QStringLiteral("3.7.0");
        makePackage(QStringLiteral("newer.deb"), newer, m_vendorKey);
        makePackage(QStringLiteral("unsigned.deb"), newer, QString());
        makePackage(QStringLiteral("other-key.deb"), newer, m_otherKey);
        makePackage(QStringLiteral("other-name.deb"), newer, m_vendorKey, QStringLiteral("openvpn"));
        makePackage(QStringLiteral("same-version.deb"), Installed, m_vendorKey);
        makePackage(QStringLiteral("older.deb"), QStringLiteral("3.6.8"), m_vendorKey);
        const char* otherArchitecture = m_architecture == QLatin1String("arm64") ? "amd64" : "arm64";
        makePackage(QStringLiteral("other-arch.deb"), newer, m_vendorKey, QStringLiteral("tavrin"), otherArchitecture);
        if (QTest::currentTestFailed())
            return;
        const auto package = [this](const char* name) {
            return path(QStringLiteral("packages/") + QLatin1String(name));
        };
        QByteArray changed = WireClient::readFile(package("newer.deb"));
        const int data = changed.indexOf("data.tar");
        QVERIFY(data > 0);
        changed[data + 80] = char(changed.at(data + 80) ^ 1);
        QVERIFY(write(package("changed.deb"), changed));
        QVERIFY(QFile::link(package("newer.deb"), package("link.deb")));
        QVERIFY(write(package("open.deb"),
                      WireClient::readFile(package("newer.deb")),
                      WireClient::Private | QFileDevice::WriteOther));
        QVERIFY(write(package("foreign.deb"), WireClient::readFile(package("newer.deb"))));
        QVERIFY(::chown(QFile::encodeName(package("foreign.deb")).constData(), 65534, 65534) == 0 || getuid() != 0);

        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("PATH"),
                   path(QStringLiteral("bin")) + QStringLiteral(":/usr/sbin:/usr/bin:/sbin:/bin"));
        env.insert(QStringLiteral("TAVRIN_HELPERD_ROOT"), path(QStringLiteral("daemon")));
        env.insert(QStringLiteral("TAVRIN_HELPERD_DPKG_ROOT"), target());
        connect(&m_daemon, &QProcess::readyRead, this, [this] { m_log += m_daemon.readAll(); });
        m_daemon.setProcessEnvironment(env);
        m_daemon.setProcessChannelMode(QProcess::MergedChannels);
        m_daemon.start(QStringLiteral(TAVRIN_HELPERD_PATH), {QStringLiteral("--port"), QString::number(m_port)});
        QVERIFY(m_daemon.waitForStarted());
        QTRY_VERIFY(m_log.contains("listening on 127.0.0.1"));
    }

    void cleanupTestCase()
    {
        for (const char* home : {"vendor-key", "other-key"})
            run(QStringLiteral("env"), {"GNUPGHOME=" + path(QLatin1String(home)), "gpgconf", "--kill", "gpg-agent"});
        m_daemon.terminate();
        QVERIFY(m_daemon.waitForFinished(10000));
    }

    void installsOnlyANewerVendorPackage_data()
    {
        QTest::addColumn<QString>("package");
        QTest::addColumn<QString>("swappedIn"); // put in the package's place while the daemon checks
        QTest::addColumn<QString>("error"); // in the log line of the refusal; none: installed

        const auto row = [](const char* name, const char* package, const char* error, const char* swappedIn = "") {
            QTest::newRow(name) << QString::fromUtf8(package) << QString::fromUtf8(swappedIn)
                                << QString::fromUtf8(error);
        };
        const char* const notSigned = "not signed by the vendor (debsig-verify exit 10";
        row("newer, signed by the vendor: installed", "newer.deb", "");
        row("signed by another key", "other-key.deb", "not signed by the vendor (debsig-verify exit 11");
        row("changed after signing", "changed.deb", "not signed by the vendor (debsig-verify exit 13");
        row("another package", "other-name.deb", "the package is \"openvpn\", not tavrin");
        row("the same version", "same-version.deb", "version 3.6.9 is not newer than the installed 3.6.9");
        row("an older version", "older.deb", "version 3.6.8 is not newer than the installed 3.6.9");
        row("another architecture", "other-arch.deb", "the package is built for ");
        row("a link", "link.deb", "missing or not a regular file");
        row("swapped for a signed one after the request", "swapped.deb", notSigned, "newer.deb");
        row("writable by others", "open.deb", "writable by others");
        row("path leaving its folder", "folder.deb/../newer.deb", "not an absolute path to a .deb file");
        if (getuid() == 0)
            row("another user's file", "foreign.deb", "owned by uid 65534, not by the caller (0)");
    }

    void installsOnlyANewerVendorPackage()
    {
        QFETCH(QString, package);
        QFETCH(QString, swappedIn);
        QFETCH(QString, error);
        resetTarget(Installed);
        prepare(true);
        const QString file = path(QStringLiteral("packages/") + package);
        if (!swappedIn.isEmpty()) {
            QVERIFY(write(file, WireClient::readFile(path(QStringLiteral("packages/unsigned.deb")))));
            QVERIFY(write(path(QStringLiteral("swap.deb")),
                          WireClient::readFile(path(QStringLiteral("packages/") + swappedIn))));
        }

        QCOMPARE(WireClient::result(m_port, WireClient::update(file)), error.isEmpty() ? 1 : 0);
        if (!error.isEmpty()) {
            const QByteArray request = QStringLiteral("updateInstall package \"%1\": ").arg(file).toUtf8();
            QTRY_VERIFY2(m_log.contains(request), m_log.constData());
            const int at = m_log.indexOf(request);
            const QByteArray line = m_log.mid(at, m_log.indexOf('\n', at) - at);
            QVERIFY2(line.contains(error.toUtf8()) && line.endsWith(" -> refused"), line.constData());
            QVERIFY(copies().isEmpty());
            QVERIFY(!QFile::exists(path(QStringLiteral("systemd-run.args"))));
            QCOMPARE(installed(), QByteArray("install ok installed 3.6.9"));
            return;
        }
        QTRY_VERIFY2(WireClient::readFile(path(QStringLiteral("systemd-run.args"))).endsWith(".deb\n"),
                     m_log.constData());
        const QByteArray unit = WireClient::readFile(path(QStringLiteral("systemd-run.args")));
        QVERIFY(unit.contains("\n--collect\n") && unit.contains("--unit=tavrin-helperd-update\n"));
        const QRegularExpression dpkg(
            QStringLiteral("\ndpkg\n--root=%1\n--force-confdef\n--force-confold\n-i\n%2/update-[0-9a-f]{16}\\.deb\n$")
                .arg(QRegularExpression::escape(target()), QRegularExpression::escape(updateDir())));
        QVERIFY2(dpkg.match(QString::fromLocal8Bit(unit)).hasMatch(), unit.constData());
        // The copy goes once dpkg is done with it.
        QTRY_VERIFY_WITH_TIMEOUT(copies().isEmpty(), 30000);
        if (getuid() != 0)
            QSKIP("installing needs root: dpkg writes its database in the throw-away root as root");
        QTRY_COMPARE_WITH_TIMEOUT(installed(), QByteArray("install ok installed 3.7.0"), 30000);
    }

    void installsAndPurgesThePackageInARoot()
    {
        if (getuid() != 0)
            QSKIP("needs root: dpkg runs the package's maintainer scripts chrooted into the throw-away root");
        const QStringList debs
            = QDir(QStringLiteral(TAVRIN_PACKAGE_DIR)).entryList({QStringLiteral("tavrin_*_amd64.deb")});
        QVERIFY2(debs.size() == 1, "no package in " TAVRIN_PACKAGE_DIR ": the CTest test update_package builds it");
        const QString deb = QStringLiteral(TAVRIN_PACKAGE_DIR "/") + debs.first();
        prepareTarget(deb);
        if (QTest::currentTestFailed())
            return;
        // Installed by an older helper, dpkg runs in the helper's own unit: restarting the helper at
        // once would kill dpkg, so the restart waits for dpkg in a unit of its own.
        QVERIFY(write(target(QStringLiteral("proc/self/cgroup")), "0::/system.slice/tavrin-helperd.service\n"));
        QVERIFY(QDir().mkpath(target(QStringLiteral("run/systemd/system"))));
        const QString package = path(QStringLiteral("download/update.deb"));
        QVERIFY(QDir().mkpath(path(QStringLiteral("download"))) && QFile::copy(deb, package));
        QVERIFY(updateKey({QStringLiteral("sign"), m_vendorKey, package}, nullptr, path(QStringLiteral("vendor-key"))));
        prepare(false);

        QCOMPARE(WireClient::result(m_port, WireClient::update(package)), 1);
        QTRY_VERIFY_WITH_TIMEOUT(copies().isEmpty(), 120000);
        const auto output = [this] {
            return m_log + WireClient::readFile(path(QStringLiteral("unit.log")));
        };
        QTRY_VERIFY2(output().contains("dpkg exited with status 0"), output().constData());
        QCOMPARE(installed(), QByteArray("install ok installed 3.6.9"));
        QByteArray calls = WireClient::readFile(target(QStringLiteral("stub-calls")));
        QVERIFY2(calls.contains("deb-systemd-helper enable tavrin-helperd.service"), calls.constData());
        QVERIFY2(calls.contains("systemd-run --unit=tavrin-helperd-restart --collect --quiet /bin/sh -c"),
                 calls.constData());
        const QList<QByteArray> lines = calls.split('\n');
        QCOMPARE(std::count_if(lines.begin(), lines.end(), [](const QByteArray& l) { return l.contains("restart"); }),
                 1);

        // Purged, the daemon stops and takes its firewall table and state with it.
        QVERIFY(write(target(QStringLiteral("var/lib/tavrin-helperd/firewall.rules")), "table inet tavrin {}\n"));
        QFile::remove(target(QStringLiteral("stub-calls")));
        int code = 0;
        const QByteArray purge = run(QStringLiteral("dpkg"), {"--root=" + target(), "--purge", "tavrin"}, &code);
        QVERIFY2(code == 0, purge.constData());
        calls = WireClient::readFile(target(QStringLiteral("stub-calls")));
        QVERIFY2(calls.contains("nft delete table inet tavrin"), calls.constData());
        QVERIFY(!QFileInfo::exists(target(QStringLiteral("var/lib/tavrin-helperd"))));
    }
};

QTEST_GUILESS_MAIN(tst_UpdateInstall)
#include "tst_UpdateInstall.moc"
