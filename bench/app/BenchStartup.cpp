// Starts the real tavrin binary again and again against the fake service and the fake helper daemon,
// with a remembered user whose cached account holds 1,000 locations, and after each a bare Qt program
// (bare_qt_window: one window, the TLS library loaded), and reports for both:
//  - the time from starting the process to the main window being shown (the "MainWindow::onShow" log line,
//    the bare program's "shown"); the program's figure leaves out its single-instance wait (2 x 100 ms);
//  - the resident memory of the idle process: the program's once the sign-in and its server list are done.
// Usage: bench_startup [runs=10] [locations=1000]; BENCH_STARTUP_MAPS=1 adds where the resident memory lies.

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <functional>

#include "BenchGoal.h"
#include "FakeHelperDaemon.h"
#include "FakeService.h"
#include "Keys.h"
#include "LocalSettings.h"
#include "NetworkManager.h"

namespace {

void pump(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Waits, running the event loop so that the in-process fakes keep answering, until the log holds `text`
// `count` times.
bool waitForLog(const QString& logPath, const QByteArray& text, int count, int timeoutMs, QElapsedTimer* clock)
{
    while (clock->elapsed() < timeoutMs) {
        if (readFile(logPath).count(text) >= count)
            return true;
        pump(1);
    }
    return false;
}

qint64 residentKiB(qint64 pid)
{
    const QByteArray status = readFile(QStringLiteral("/proc/%1/status").arg(pid));
    for (const QByteArray& line : status.split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLongLong();
    }
    return -1;
}

// With BENCH_STARTUP_MAPS set, where a process's resident memory lies: the largest mappings by file (anonymous
// memory as "[anon]"), in KiB.
void printMaps(const char* who, qint64 pid)
{
    if (!qEnvironmentVariableIsSet("BENCH_STARTUP_MAPS"))
        return;
    QMap<QByteArray, qint64> byName;
    QByteArray name;
    for (const QByteArray& line : readFile(QStringLiteral("/proc/%1/smaps").arg(pid)).split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() >= 5 && fields.at(0).contains('-') && !line.endsWith(':'))
            name = fields.size() >= 6 ? fields.at(5) : QByteArrayLiteral("[anon]");
        else if (fields.value(0) == "Rss:")
            byName[name] += fields.value(1).toLongLong();
    }
    QVector<QPair<qint64, QByteArray>> sorted;
    for (auto it = byName.cbegin(); it != byName.cend(); ++it)
        sorted.append({it.value(), it.key()});
    std::sort(sorted.begin(), sorted.end(), std::greater<>());
    for (int i = 0; i < std::min(20, int(sorted.size())); ++i)
        std::printf("  %s %8lld KiB %s\n", who, sorted.at(i).first, sorted.at(i).second.constData());
}

FakeFixture largeFixture(int locations)
{
    FakeFixture fixture = FakeFixture::demo();
    fixture.logins.resize(1);
    fixture.upgradeVersion.clear();
    fixture.servers.clear();
    const char* flags[] = {"de", "nl", "ch", "us", "jp", "gb", "se", "fr", "es", "it"};
    for (int i = 0; i < locations; ++i) {
        FakeServer server;
        server.name = QStringLiteral("Location %1").arg(i, 4, 10, QLatin1Char('0'));
        // Loopback only: nothing is ever sent anywhere else.
        server.ip = QStringLiteral("127.0.%1.%2").arg(i / 250).arg(i % 250 + 1);
        server.tcp = QStringLiteral("80,88,8008");
        server.udp = QStringLiteral("1194,118,123,443,9200");
        server.ssl = QStringLiteral("443");
        server.flag = QString::fromLatin1(flags[i % 10]);
        server.user = fixture.logins.first().user;
        server.dns = QStringLiteral("10.8.0.1");
        server.group = i % 10 == 9 ? QStringLiteral("2") : QStringLiteral("1");
        server.sni = QStringLiteral("www.velmora.com");
        fixture.servers << server;
    }
    return fixture;
}

// The program's two 100 ms pauses while it looks for a running instance.
const double SingleInstanceWaitMs = 200;

void stop(QProcess& process)
{
    process.terminate();
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished(5000);
    }
}

double median(QVector<double> values)
{
    std::sort(values.begin(), values.end());
    const int n = values.size();
    return n % 2 ? values.at(n / 2) : (values.at(n / 2 - 1) + values.at(n / 2)) / 2;
}

} // namespace

int main(int argc, char** argv)
{
    const int runs = argc > 1 ? std::max(1, atoi(argv[1])) : 10;
    const int locations = argc > 2 ? std::max(1, atoi(argv[2])) : 1000;

    // A private home for this process and the programs it starts, with a `ping` that does nothing.
    QTemporaryDir root;
    const QString home = root.path() + QStringLiteral("/home");
    QDir().mkpath(home + QStringLiteral("/run"));
    QDir().mkpath(root.path() + QStringLiteral("/bin"));
    QFile::link(QStringLiteral("/bin/true"), root.path() + QStringLiteral("/bin/ping"));
    qputenv("PATH", QFile::encodeName(root.path() + QStringLiteral("/bin:")) + qgetenv("PATH"));
    qputenv("HOME", QFile::encodeName(home));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(home + QStringLiteral("/.config")));
    qputenv("XDG_DATA_HOME", QFile::encodeName(home + QStringLiteral("/.local/share")));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(home + QStringLiteral("/.cache")));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(home + QStringLiteral("/run")));
    qputenv("QT_QPA_PLATFORM", "offscreen");

    QCoreApplication app(argc, argv);
    app.setOrganizationName(QStringLiteral("QOLV"));
    app.setApplicationName(QStringLiteral("Tavrin"));

    FakeService service;
    QString error;
    if (!service.start(0, &error)) {
        std::fprintf(stderr, "fake service: %s\n", qPrintable(error));
        return 1;
    }
    service.setFixture(largeFixture(locations));
    qputenv("TAVRIN_API_URL", service.baseUrl().toUtf8());
    qputenv("TAVRIN_CA_FILE", QFile::encodeName(FakeService::caFile()));
    qputenv("TAVRIN_SITE_URL", service.baseUrl().toUtf8());
    qputenv("TAVRIN_PROBE_URL", "http://127.0.0.1:1/");
    FakeHelperDaemon daemon;
    if (!daemon.start()) {
        std::fprintf(stderr, "fake helper daemon did not start\n");
        return 1;
    }

    // Sign in once here so that the settings file holds the remembered user and the cached account.
    {
        LocalSettings::instance()->createDefaultSettings();
        LocalSettings::instance()->setValue(Keys::RememberUser, true);
        LocalSettings::instance()->setValue(Keys::Login, QStringLiteral("demo"));
        LocalSettings::instance()->setValue(Keys::Passwd, QStringLiteral("demo"));
        LocalSettings::instance()->setValue(Keys::VpnLogin, service.fixture().logins.first().user);
        QSignalSpy auth(NetworkManager::instance(), &NetworkManager::auth);
        NetworkManager::instance()->authRequest(QStringLiteral("demo"), QStringLiteral("demo"));
        if (!auth.wait(60000) || auth.at(0).at(0).toInt() != NetworkManager::Success) {
            std::fprintf(stderr, "sign-in against the fake service failed\n");
            return 1;
        }
        NetworkManager::resetInstance();
        LocalSettings::resetInstance();
    }

    const QString logPath = home + QStringLiteral("/.local/share/QOLV/Tavrin/log.txt");
    QVector<double> startMs, bareStartMs, residentMiB, bareResidentMiB;
    for (int run = 0; run < runs; ++run) {
        QFile::remove(logPath);
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.setStandardOutputFile(QProcess::nullDevice());
        QElapsedTimer clock;
        clock.start();
        // BENCH_STARTUP_WRAPPER runs the program under a profiler, e.g. "heaptrack -o /tmp/start".
        QStringList command = QString::fromLocal8Bit(qgetenv("BENCH_STARTUP_WRAPPER")).split(' ', Qt::SkipEmptyParts);
        command << QStringLiteral(TAVRIN_BINARY);
        process.start(command.takeFirst(), command);
        if (!waitForLog(logPath, "MainWindow::onShow", 1, 30000, &clock)) {
            std::fprintf(
                stderr, "run %d: the window was not shown\n%s\n", run + 1, readFile(logPath).right(2000).constData());
            return 1;
        }
        startMs << double(clock.nsecsElapsed()) / 1e6 - SingleInstanceWaitMs;
        if (qEnvironmentVariableIsSet("BENCH_STARTUP_LOG"))
            std::fprintf(stderr, "%s\n", readFile(logPath).constData());

        // Idle: signed in again in the background, the list of locations in place, nothing left to do.
        if (!waitForLog(logPath, "Auth Request finished", 1, 60000, &clock)) {
            std::fprintf(stderr, "run %d: the background sign-in did not finish\n", run + 1);
            return 1;
        }
        pump(3000);
        residentMiB << double(residentKiB(process.processId())) / 1024.0;
        printMaps("tavrin", process.processId());
        stop(process);

        QProcess bare;
        bare.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        clock.restart();
        bare.start(QStringLiteral(BARE_QT_BINARY), QStringList());
        while (!bare.canReadLine() && bare.waitForReadyRead(30000)) { }
        bareStartMs << double(clock.nsecsElapsed()) / 1e6;
        pump(3000);
        bareResidentMiB << double(residentKiB(bare.processId())) / 1024.0;
        printMaps("bare", bare.processId());
        stop(bare);
        std::printf("run %2d: start %.1f ms (bare %.1f), idle resident %.1f MiB (bare %.1f)\n",
                    run + 1,
                    startMs.last(),
                    bareStartMs.last(),
                    residentMiB.last(),
                    bareResidentMiB.last());
    }
    const double start = median(startMs), bareStart = median(bareStartMs);
    const double resident = median(residentMiB), bareResident = median(bareResidentMiB);
    std::printf("start to main window shown (cached start, offscreen, %d runs, less the single-instance wait): "
                "median %.1f ms, min %.1f, max %.1f; bare Qt program %.1f ms; ratio %.2f\n",
                runs,
                start,
                *std::min_element(startMs.begin(), startMs.end()),
                *std::max_element(startMs.begin(), startMs.end()),
                bareStart,
                start / bareStart);
    std::printf("idle resident memory with %d locations: median %.1f MiB, max %.1f; bare Qt program %.1f MiB; "
                "difference %.1f MiB\n",
                locations,
                resident,
                *std::max_element(residentMiB.begin(), residentMiB.end()),
                bareResident,
                resident - bareResident);
    std::printf("%s\n", qPrintable(goalLine("start", start, "ms", 2 * bareStart)));
    std::printf("%s\n", qPrintable(goalLine("idle memory", resident, "MiB", bareResident + 10)));
    return 0;
}
