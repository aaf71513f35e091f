#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

// A private world for one test process: its own settings, data and temporary directories, a `ping` that does
// nothing, and every service address on loopback, so that nothing leaves the machine. Create it in main()
// before the application object.
class ApiTestEnvironment
{
public:
    ApiTestEnvironment()
    {
        const QString root = m_root.path();
        for (const char* sub : {"config", "data", "tmp", "bin"})
            QDir(root).mkpath(QLatin1String(sub));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(root + QStringLiteral("/config")));
        qputenv("XDG_DATA_HOME", QFile::encodeName(root + QStringLiteral("/data")));
        qputenv("TMPDIR", QFile::encodeName(root + QStringLiteral("/tmp")));
        QFile::link(QStringLiteral("/bin/true"), root + QStringLiteral("/bin/ping"));
        qputenv("PATH", QFile::encodeName(root + QStringLiteral("/bin:")) + qgetenv("PATH"));
        // Port 1 on loopback: nothing listens there, so the defaults fail fast and locally.
        qputenv("TAVRIN_API_URL", "https://127.0.0.1:1");
        qputenv("TAVRIN_SITE_URL", "https://127.0.0.1:1");
        qputenv("TAVRIN_PROBE_URL", "http://127.0.0.1:1/");
    }

    QString tempPath() const { return m_root.path() + QStringLiteral("/tmp"); }

    static void setIdentity(QCoreApplication& app)
    {
        app.setOrganizationName(QStringLiteral("QOLV"));
        app.setApplicationName(QStringLiteral("Tavrin"));
    }

private:
    QTemporaryDir m_root;
};

#define TAVRIN_API_TEST_MAIN(TestClass)                                                                                \
    int main(int argc, char** argv)                                                                                    \
    {                                                                                                                  \
        ApiTestEnvironment environment;                                                                                \
        QCoreApplication app(argc, argv);                                                                              \
        ApiTestEnvironment::setIdentity(app);                                                                          \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
