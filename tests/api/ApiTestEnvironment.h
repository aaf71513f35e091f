#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

// A private world for one test process: own settings, data and temporary directories, a `ping` that does nothing,
// and every service address on loopback port 1, where nothing listens. Create it before the application object.
class ApiTestEnvironment
{
public:
    ApiTestEnvironment()
    {
        const QByteArray root = QFile::encodeName(m_root.path());
        for (const char* sub : {"config", "data", "tmp", "bin"})
            QDir(m_root.path()).mkpath(QLatin1String(sub));
        qputenv("XDG_CONFIG_HOME", root + "/config");
        qputenv("XDG_DATA_HOME", root + "/data");
        qputenv("TMPDIR", root + "/tmp");
        QFile::link(QStringLiteral("/bin/true"), m_root.path() + QStringLiteral("/bin/ping"));
        qputenv("PATH", root + "/bin:" + qgetenv("PATH"));
        for (const char* name : {"TAVRIN_API_URL", "TAVRIN_SITE_URL"})
            qputenv(name, "https://127.0.0.1:1");
        qputenv("TAVRIN_PROBE_URL", "http://127.0.0.1:1/");
    }

private:
    QTemporaryDir m_root;
};

#define TAVRIN_API_TEST_MAIN(TestClass)                                                                                \
    int main(int argc, char** argv)                                                                                    \
    {                                                                                                                  \
        ApiTestEnvironment environment;                                                                                \
        QCoreApplication app(argc, argv);                                                                              \
        app.setOrganizationName(QStringLiteral("QOLV"));                                                               \
        app.setApplicationName(QStringLiteral("Tavrin"));                                                              \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
