// Times the service client on a large account: a sign-in answer of 10,000 servers through the real handler, and
// the offline cache's save and load of that account. Goal: each under 100 ms.
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

#include "FakeService.h"
#include "GetManager.h"
#include "LocalSettings.h"
#include "NetworkManager.h"
#include "TestEnvironment.h"

namespace {
const int serverCount = 10000;
const int rounds = 5;

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

void report(QTextStream& out, const char* what, const Column& column, bool goal)
{
    out << QString::asprintf("  %-52s median %7.1f ms  worst %7.1f ms%s\n",
                             what,
                             column.median(),
                             column.worst(),
                             !goal ? "" : (column.median() < 100.0 ? "  (goal met)" : "  (OVER 100 ms)"));
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
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        const int rc = qstrcmp(argv[2], "signin") == 0 ? signInChild(out) : loadChild(out);
        out.flush();
        // Leave at once: the ping pass would otherwise be waited for.
        ::_exit(rc);
    }

    FakeService service;
    service.setFixture(largeAccount());
    QString error;
    if (!service.start(0, &error)) {
        out << "cannot start the fake service: " << error << '\n';
        return 1;
    }
    qputenv("TAVRIN_API_URL", service.baseUrl().toUtf8());
    qputenv("TAVRIN_CA_FILE", QFile::encodeName(FakeService::caFile()));

    Column transfer, signIn, handler, save, saveToDisk, readFile, load;
    int answerBytes = 0;
    int reloaded = 0;
    for (int i = 0; i < rounds; ++i) {
        const QList<QByteArray> f = runChild(QStringLiteral("signin"));
        if (f.size() != 6 || f[0] != "signin") {
            out << "sign-in run failed\n";
            return 1;
        }
        transfer.values << f[1].toDouble();
        signIn.values << f[2].toDouble();
        handler.values << std::max(0.0, f[2].toDouble() - f[1].toDouble());
        save.values << f[3].toDouble();
        saveToDisk.values << f[4].toDouble();
        answerBytes = f[5].toInt();
    }
    for (int i = 0; i < rounds; ++i) {
        const QList<QByteArray> f = runChild(QStringLiteral("load"));
        if (f.size() != 4 || f[0] != "load") {
            out << "load run failed\n";
            return 1;
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
    report(out, "round trip: request to auth()", signIn, false);
    report(out, "bare transfer of the same answer", transfer, false);
    report(out, "handler: parse, store, start pings, save (difference)", handler, true);
    out << "Offline cache of that account:\n";
    report(out, "save into the settings store", save, true);
    report(out, "save including the write to disk", saveToDisk, false);
    report(out, "load: settings file read", readFile, false);
    report(out, "load: file read and tables filled (restart)", load, true);
    out << "  servers of the chosen login after the reload: " << reloaded << '\n';
    return reloaded == serverCount / 2 ? 0 : 1;
}
