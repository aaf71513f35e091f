#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#ifdef QT_TESTLIB_LIB
#include <QSignalSpy>
#include <QTest>
#endif
#ifdef QT_WIDGETS_LIB
#include <QApplication>
#endif

#include <cstring>
#include <utility>

// What the tests share. First a private world for one test process: its own home, settings, data and temporary
// directories, a `ping` that does nothing, and every service address on loopback port 1, where nothing listens, so that
// a request a test did not set up fails at once. Create it in main() before the application object.
class TestEnvironment
{
public:
    TestEnvironment()
    {
        const QString root = m_root.path();
        for (const auto& place : {std::make_pair("HOME", "/home"),
                                  std::make_pair("XDG_CONFIG_HOME", "/config"),
                                  std::make_pair("XDG_DATA_HOME", "/data"),
                                  std::make_pair("TMPDIR", "/tmp")}) {
            QDir().mkpath(root + QLatin1String(place.second));
            qputenv(place.first, QFile::encodeName(root + QLatin1String(place.second)));
        }
        QDir().mkpath(root + QStringLiteral("/bin"));
        QFile::link(QStringLiteral("/bin/true"), root + QStringLiteral("/bin/ping"));
        qputenv("PATH", QFile::encodeName(root + QStringLiteral("/bin:")) + qgetenv("PATH"));
        for (const char* name : {"TAVRIN_API_URL", "TAVRIN_SITE_URL"})
            qputenv(name, "https://127.0.0.1:1");
        qputenv("TAVRIN_PROBE_URL", "http://127.0.0.1:1/");
    }

private:
    QTemporaryDir m_root;
};

#ifdef QT_TESTLIB_LIB
// Starts the fake service and points the client at it, trusting the authority of its certificate. A template, so
// that the tests that have no fake service need not build with it.
template <class Service>
void useFakeService(Service& service)
{
    QString error;
    QVERIFY2(service.start(0, &error), qPrintable(error));
    qputenv("TAVRIN_API_URL", service.baseUrl().toUtf8());
    qputenv("TAVRIN_CA_FILE", QFile::encodeName(Service::caFile()));
}

// Signs in through the service client and returns the code of its answer, or -1 when none came.
template <class Client>
int signInAndWait(Client* client,
                  const QString& user = QStringLiteral("demo"),
                  const QString& password = QStringLiteral("demo"))
{
    QSignalSpy auth(client, &Client::auth);
    client->authRequest(user, password);
    return auth.wait(30000) ? auth.at(0).at(0).toInt() : -1;
}
#endif

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline bool writeFile(const QString& path, const QByteArray& data)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(data) == data.size();
}

// Readable by its owner, and not open to group or others in any way.
inline bool ownerOnly(const QString& path)
{
    const QFileDevice::Permissions permissions = QFile::permissions(path);
    return (permissions & QFileDevice::ReadOwner) && !(permissions & 0x00FF);
}

// The command number at the head of a request to the helper daemon.
inline quint32 commandOf(const QByteArray& request)
{
    quint32 command = 0;
    std::memcpy(&command, request.constData(), 4);
    return command;
}

// The main() of a test in a TestEnvironment, under the program's own names; `setup` runs after the application
// object is made.
#define TAVRIN_ENVIRONMENT_TEST_MAIN(TestClass, Application, setup)                                                    \
    int main(int argc, char** argv)                                                                                    \
    {                                                                                                                  \
        TestEnvironment environment;                                                                                   \
        Application app(argc, argv);                                                                                   \
        app.setOrganizationName(QStringLiteral("QOLV"));                                                               \
        app.setApplicationName(QStringLiteral("Tavrin"));                                                              \
        setup;                                                                                                         \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
#define TAVRIN_API_TEST_MAIN(TestClass) TAVRIN_ENVIRONMENT_TEST_MAIN(TestClass, QCoreApplication, )
#define TAVRIN_PAGE_TEST_MAIN(TestClass)                                                                               \
    TAVRIN_ENVIRONMENT_TEST_MAIN(TestClass, QApplication, QApplication::setQuitOnLastWindowClosed(false))
