// Times the service client on a large account: a sign-in answer of 10,000 servers through the real handler, beside
// the bare transfer of the same answer, on loopback and over a link paced at 50 Mbit/s (where the answer is read
// while it arrives), and the offline cache's save and load of that account. Goals at 10,000: the sign-in within 1.3
// times the transfer on loopback, the cache load within 12 ms.
// Usage: bench_api [servers...]   (default 10000; several counts show how the cost grows)
//
// Every sign-in and load starts a ping pass of 10,000 jobs, each of which starts a process. Those forks of a large
// process slow everything else down for minutes, so each measurement runs in a fresh child process that reports
// its figures and leaves without waiting for the pass.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <unistd.h>

#include "BenchGoal.h"
#include "FakeService.h"
#include "GetManager.h"
#include "LocalSettings.h"
#include "NetworkManager.h"
#include "TestEnvironment.h"

namespace {
int serverCount = 10000;
const int rounds = 5;
// 50 Mbit/s, a common home link.
const int pacedBytesPerSecond = 50 * 1000 * 1000 / 8;

FakeFixture largeAccount()
{
    FakeFixture f = FakeFixture::demo();
    const QVector<FakeServer> templates = f.servers;
    f.servers.clear();
    for (int i = 0; i < serverCount; ++i) {
        FakeServer s = templates[i % templates.size()];
        s.name = QStringLiteral("%1 %2").arg(s.name).arg(i);
        s.user = f.logins[i % f.logins.size()].user;
        f.servers.append(s);
    }
    return f;
}

template <typename Object, typename Signal>
bool waitFor(Object* sender, Signal signal)
{
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, &QEventLoop::quit);
    QTimer::singleShot(60000, &loop, [&loop]() { loop.exit(1); });
    return loop.exec() == 0;
}

double msSince(const QElapsedTimer& timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

// Child: the bare transfer of the account answer, then the sign-in with the same answer, then a cache save.
int signInChild(QTextStream& out)
{
    const QString base = NetworkManager::apiLink();
    // A first small request loads the TLS library and the authorities, as the program does while it starts, so that
    // neither figure below carries that.
    GetManager warmUp(10000, nullptr);
    warmUp.getAsync(QUrl(base + QStringLiteral("/connect?act=time")), 0);
    if (!waitFor(&warmUp, &GetManager::finished))
        return 1;
    // The transfer opens a connection of its own, TLS handshake and all, as the sign-in does.
    GetManager channel(10000, nullptr);
    QElapsedTimer timer;
    timer.start();
    channel.getAsync(QUrl(base + QStringLiteral("/connect?login=demo&pass=demo&act=wizardsetup")), 0);
    if (!waitFor(&channel, &GetManager::finished) || !channel.success)
        return 1;
    const double transfer = msSince(timer);

    // Start without a cached account, so that no ping pass of an earlier run is under way.
    QFile::remove(LocalSettings::instance()->fileName());
    LocalSettings::resetInstance();
    LocalSettings::instance()->setValue(Keys::RememberUser, true);
    NetworkManager* client = NetworkManager::instance();
    timer.restart();
    client->authRequest(QStringLiteral("demo"), QStringLiteral("demo"));
    if (!waitFor(client, &NetworkManager::auth))
        return 1;
    const double signIn = msSince(timer);

    timer.restart();
    client->saveCachedData();
    const double save = msSince(timer);
    LocalSettings::instance()->sync();
    const double saveToDisk = msSince(timer);
    out << "signin " << transfer << ' ' << signIn << ' ' << save << ' ' << saveToDisk << ' ' << channel.data.size()
        << Qt::endl;
    return 0;
}

// Child: a restart's cache load (settings file read, then the client's constructor filling its tables).
int loadChild(QTextStream& out)
{
    QElapsedTimer timer;
    timer.start();
    LocalSettings::instance();
    const double readFile = msSince(timer);
    NetworkManager* client = NetworkManager::instance();
    const double load = msSince(timer);
    LocalSettings::instance()->setValue(Keys::VpnLogin, QStringLiteral("vpn-demo1"));
    out << "load " << readFile << ' ' << load << ' ' << client->servers().size() << Qt::endl;
    return 0;
}

struct Column
{
    QVector<double> values;
    double median() const
    {
        QVector<double> sorted = values;
        std::sort(sorted.begin(), sorted.end());
        return sorted.at(sorted.size() / 2);
    }
    double worst() const { return *std::max_element(values.cbegin(), values.cend()); }
};

void report(QTextStream& out, const char* what, const Column& column)
{
    out << QString::asprintf("  %-52s median %7.1f ms  worst %7.1f ms\n", what, column.median(), column.worst());
}

QList<QByteArray> runChild(const QString& mode)
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--child"), mode});
    // The parent's event loop must run: it is the fake service that answers the child.
    QEventLoop loop;
    QObject::connect(&child, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), &loop, &QEventLoop::quit);
    QTimer::singleShot(120000, &loop, &QEventLoop::quit);
    loop.exec();
    const QByteArray line = child.readAllStandardOutput().trimmed();
    return line.split(' ');
}
// One account size: the sign-in and load children, five rounds each, and the figures with their goals.
bool measure(QTextStream& out, FakeService& service)
{
    Column transfer, signIn, handler, save, saveToDisk, readFile, load, pacedTransfer, pacedSignIn, pacedHandler;
    int answerBytes = 0;
    int reloaded = 0;
    // Five sign-in children with the answer sent at a link's rate (0: at once, as fast as loopback carries it).
    QList<QByteArray> f;
    const auto signIns = [&](int bytesPerSecond, Column& bare, Column& full, Column& beyond) {
        service.setBodyRate(bytesPerSecond);
        for (int i = 0; i < rounds; ++i) {
            f = runChild(QStringLiteral("signin"));
            if (f.size() != 6 || f[0] != "signin")
                return false;
            bare.values << f[1].toDouble();
            full.values << f[2].toDouble();
            beyond.values << std::max(0.0, f[2].toDouble() - f[1].toDouble());
            save.values << f[3].toDouble();
            saveToDisk.values << f[4].toDouble();
            answerBytes = f[5].toInt();
        }
        return true;
    };
    if (!signIns(pacedBytesPerSecond, pacedTransfer, pacedSignIn, pacedHandler)
        || !signIns(0, transfer, signIn, handler)) {
        out << "sign-in run failed\n";
        return false;
    }
    for (int i = 0; i < rounds; ++i) {
        f = runChild(QStringLiteral("load"));
        if (f.size() != 4 || f[0] != "load") {
            out << "load run failed\n";
            return false;
        }
        readFile.values << f[1].toDouble();
        load.values << f[2].toDouble();
        reloaded = f[3].toInt();
    }

    out << QString::asprintf("Account of %d servers, answer of %.1f MB; %d runs, each in a fresh process.\n",
                             serverCount,
                             double(answerBytes) / (1024 * 1024),
                             rounds);
    out << "Sign-in answer (loopback HTTPS, bytes to the auth signal):\n";
    report(out, "round trip: request to auth()", signIn);
    report(out, "bare transfer of the same answer", transfer);
    report(out, "handler: parse, store, start pings, save (difference)", handler);
    out << QString::asprintf("  ratio sign-in / bare transfer %.2f\n", signIn.median() / transfer.median());
    out << "The same over a link of 50 Mbit/s:\n";
    report(out, "round trip: request to auth()", pacedSignIn);
    report(out, "bare transfer of the same answer", pacedTransfer);
    report(out, "handler beyond the transfer (difference)", pacedHandler);
    out << "Offline cache of that account:\n";
    report(out, "save into the settings store", save);
    report(out, "save including the write to disk", saveToDisk);
    report(out, "load: settings file read", readFile);
    report(out, "load: file read and tables filled (restart)", load);
    out << "  servers of the chosen login after the reload: " << reloaded << '\n';
    if (serverCount == 10000) {
        out << goalLine("sign-in", signIn.median(), "ms", 1.3 * transfer.median()) << '\n';
        out << goalLine("cache load", load.median(), "ms", 12) << '\n';
    }
    out.flush();
    return reloaded == serverCount / 2;
}

} // namespace

int main(int argc, char** argv)
{
    const bool child = argc == 3 && qstrcmp(argv[1], "--child") == 0;
    QScopedPointer<TestEnvironment> environment(child ? nullptr : new TestEnvironment);
    QCoreApplication app(argc, argv);
    app.setOrganizationName(QStringLiteral("QOLV"));
    app.setApplicationName(QStringLiteral("Tavrin"));
    QTextStream out(stdout);
    if (child) {
        serverCount = qEnvironmentVariableIntValue("BENCH_API_SERVERS");
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        const int rc = qstrcmp(argv[2], "signin") == 0 ? signInChild(out) : loadChild(out);
        out.flush();
        // Leave at once: the ping pass would otherwise be waited for.
        ::_exit(rc);
    }

    FakeService service;
    QString error;
    if (!service.start(0, &error)) {
        out << "cannot start the fake service: " << error << '\n';
        return 1;
    }
    qputenv("TAVRIN_API_URL", service.baseUrl().toUtf8());
    qputenv("TAVRIN_CA_FILE", QFile::encodeName(FakeService::caFile()));
    QList<int> counts;
    for (int i = 1; i < argc; ++i)
        counts << std::max(2, atoi(argv[i]));
    if (counts.isEmpty())
        counts << serverCount;
    for (const int count : qAsConst(counts)) {
        serverCount = count;
        qputenv("BENCH_API_SERVERS", QByteArray::number(count));
        service.setFixture(largeAccount());
        if (!measure(out, service))
            return 1;
    }
    return 0;
}
