#include <QtTest>

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <csignal>

// Runs the built program as a user would, in a home of its own.
class TestLaunch : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_home.reset(new QTemporaryDir());
        QVERIFY(m_home->isValid());
        QDir(m_home->path()).mkpath(QStringLiteral("run"));
        QFile::setPermissions(m_home->path() + QStringLiteral("/run"),
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }

    void cleanup()
    {
        for (QProcess* process : qAsConst(m_processes)) {
            if (process->state() != QProcess::NotRunning) {
                process->kill();
                process->waitForFinished(5000);
            }
            delete process;
        }
        m_processes.clear();
    }

    void secondStartWakesTheFirst()
    {
        QProcess* first = start({});
        QTRY_VERIFY_WITH_TIMEOUT(log().contains("MainWindow::onShow"), 10000);
        QCOMPARE(log().count("Not one"), 2);
        QCOMPARE(first->state(), QProcess::Running);

        QElapsedTimer clock;
        clock.start();
        QProcess* second = start({});
        QVERIFY(second->waitForFinished(5000));
        const qint64 elapsed = clock.elapsed();
        QCOMPARE(second->exitStatus(), QProcess::NormalExit);
        QCOMPARE(second->exitCode(), 0);
        qInfo("second start returned after %lld ms", elapsed);

        QTRY_VERIFY_WITH_TIMEOUT(log().contains("DBG Wake up!"), 5000);
        const QByteArray text = log();
        QCOMPARE(text.count("Try wake up!"), 3); // twice for the first start, once for the second
        QCOMPARE(text.count(" started. Build date: "), 2);
        QVERIFY(QRegularExpression(
                    QStringLiteral(R"(\] DBG Tavrin  started\. Build date: \w{3} [ \d]\d \d{4}, \d\d:\d\d:\d\d\n)"))
                    .match(QString::fromUtf8(text))
                    .hasMatch());
        QVERIFY(text.contains("] DBG " + QByteArray(64, '-') + "\n"));
    }

    void settingsFileHoldsDefaultsOwnerOnly()
    {
        start({});
        QTRY_VERIFY_WITH_TIMEOUT(log().count("Not one") == 2, 10000);
        const QString path = m_home->path() + QStringLiteral("/.config/QOLV/Tavrin.conf");
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(path), 5000);
        // Nothing for group or others.
        QCOMPARE(QFileInfo(path).permissions() & 0x00FF, QFileDevice::Permissions());
        QTRY_VERIFY_WITH_TIMEOUT(readFile(path).contains("advProtocol=tcp"), 5000);
        const QByteArray conf = readFile(path);
        QVERIFY(conf.contains("iPv6LeakProtect=true"));
        QVERIFY(conf.contains("rememberUser=false"));
        QVERIFY(conf.contains("flag=1"));
    }

    void hiddenStartShowsNoWindow()
    {
        start({QStringLiteral("-h")});
        QTRY_VERIFY_WITH_TIMEOUT(log().contains("MainWindow::onHide"), 10000);
        QVERIFY(!log().contains("MainWindow::onShow"));
    }

    void autostartOptionChangesNothing()
    {
        start({QStringLiteral("-a")});
        QTRY_VERIFY_WITH_TIMEOUT(log().contains("MainWindow::onShow"), 10000);
    }

    void unknownOptionEndsTheProcess()
    {
        QProcess* process = start({QStringLiteral("--no-such-option")});
        QVERIFY(process->waitForFinished(10000));
        QCOMPARE(process->exitCode(), 1);
        QVERIFY(process->readAllStandardError().contains("Unknown option 'no-such-option'"));
    }

    void crashedInstanceIsReplaced()
    {
        QProcess* first = start({});
        QTRY_VERIFY_WITH_TIMEOUT(log().count("Not one") == 2, 10000);
        ::kill(pid_t(first->processId()), SIGKILL);
        QVERIFY(first->waitForFinished(5000));

        QProcess* second = start({});
        QTRY_VERIFY_WITH_TIMEOUT(log().count("Not one") == 4, 10000);
        QCOMPARE(second->state(), QProcess::Running);
    }

private:
    QProcess* start(const QStringList& arguments)
    {
        auto* process = new QProcess();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), m_home->path());
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home->path() + QStringLiteral("/.config"));
        env.insert(QStringLiteral("XDG_DATA_HOME"), m_home->path() + QStringLiteral("/.local/share"));
        env.insert(QStringLiteral("XDG_CACHE_HOME"), m_home->path() + QStringLiteral("/.cache"));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_home->path() + QStringLiteral("/run"));
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        process->setProcessEnvironment(env);
        process->start(QStringLiteral(TAVRIN_BINARY), arguments);
        m_processes << process;
        return process;
    }

    QByteArray log() const { return readFile(m_home->path() + QStringLiteral("/.local/share/QOLV/Tavrin/log.txt")); }

    static QByteArray readFile(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QScopedPointer<QTemporaryDir> m_home;
    QList<QProcess*> m_processes;
};

QTEST_GUILESS_MAIN(TestLaunch)
#include "tst_Launch.moc"
