#pragma once

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstring>

// A private world for one page test process: its own home, settings and data directories, a `ping` that
// does nothing, and every service address on loopback. Create it in main() before the application object.
class PageTestEnvironment
{
public:
    PageTestEnvironment()
    {
        const QString root = m_root.path();
        for (const char* sub : {"home", "config", "data", "tmp", "bin"})
            QDir(root).mkpath(QLatin1String(sub));
        qputenv("HOME", QFile::encodeName(root + QStringLiteral("/home")));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(root + QStringLiteral("/config")));
        qputenv("XDG_DATA_HOME", QFile::encodeName(root + QStringLiteral("/data")));
        qputenv("TMPDIR", QFile::encodeName(root + QStringLiteral("/tmp")));
        QFile::link(QStringLiteral("/bin/true"), root + QStringLiteral("/bin/ping"));
        qputenv("PATH", QFile::encodeName(root + QStringLiteral("/bin:")) + qgetenv("PATH"));
        // Port 1 on loopback: nothing listens there, so a request a test did not set up fails at once.
        qputenv("TAVRIN_API_URL", "https://127.0.0.1:1");
        qputenv("TAVRIN_SITE_URL", "https://127.0.0.1:1");
        qputenv("TAVRIN_PROBE_URL", "http://127.0.0.1:1/");
    }

private:
    QTemporaryDir m_root;
};

// The command number at the head of a request to the helper daemon.
inline quint32 commandOf(const QByteArray& request)
{
    quint32 command = 0;
    std::memcpy(&command, request.constData(), 4);
    return command;
}

#define TAVRIN_PAGE_TEST_MAIN(TestClass)                                                                               \
    int main(int argc, char** argv)                                                                                    \
    {                                                                                                                  \
        PageTestEnvironment environment;                                                                               \
        QApplication app(argc, argv);                                                                                  \
        app.setOrganizationName(QStringLiteral("QOLV"));                                                               \
        app.setApplicationName(QStringLiteral("Tavrin"));                                                              \
        app.setQuitOnLastWindowClosed(false);                                                                          \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
