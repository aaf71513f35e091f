#include <QtTest>

#include <QTemporaryDir>
#include <QThread>

#include "ALog.h"

class TestALog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dataHome.isValid());
        // A data directory several levels down that does not exist yet.
        qputenv("XDG_DATA_HOME", (m_dataHome.path() + QStringLiteral("/not/yet")).toLocal8Bit());
    }

    void lineFormat_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("debug") << int(QtDebugMsg) << "hello" << QByteArray("[01.02.2023 04:05:06.007] DBG hello\n");
        QTest::newRow("warning") << int(QtWarningMsg) << "w" << QByteArray("[01.02.2023 04:05:06.007] WRN w\n");
        QTest::newRow("critical") << int(QtCriticalMsg) << "c" << QByteArray("[01.02.2023 04:05:06.007] CRT c\n");
        QTest::newRow("fatal") << int(QtFatalMsg) << "f" << QByteArray("[01.02.2023 04:05:06.007] FTL f\n");
        QTest::newRow("info has two blanks and no tag")
            << int(QtInfoMsg) << "i" << QByteArray("[01.02.2023 04:05:06.007]  i\n");
        QTest::newRow("embedded line feeds kept, one added") << int(QtDebugMsg) << "a\nb\n"
                                                             << QByteArray("[01.02.2023 04:05:06.007] DBG a\nb\n\n");
        QTest::newRow("non-ASCII as UTF-8") << int(QtDebugMsg) << QString::fromUtf8("Füße")
                                            << QByteArray("[01.02.2023 04:05:06.007] DBG F\xc3\xbc\xc3\x9f"
                                                          "e\n");
    }
    void lineFormat()
    {
        QFETCH(int, type);
        QFETCH(QString, text);
        QFETCH(QByteArray, expected);
        const QDateTime when(QDate(2023, 2, 1), QTime(4, 5, 6, 7));
        QCOMPARE(formatLogLine(QtMsgType(type), when, text), expected);
    }

    void handlerCreatesDirectoryAndAppends()
    {
        const QString path = applicationLogPath();
        QFile::remove(path);
        myMessageOutput(QtDebugMsg, QMessageLogContext(), QStringLiteral("first"));
        myMessageOutput(QtInfoMsg, QMessageLogContext(), QStringLiteral("second"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = file.readAll().split('\n');
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines[0].endsWith("] DBG first"));
        QVERIFY(lines[1].endsWith("]  second"));
        QVERIFY(path.startsWith(m_dataHome.path() + QStringLiteral("/not/yet/")));
    }

    void handlerFromSeveralThreadsKeepsLinesWhole()
    {
        const QString path = applicationLogPath();
        QFile::remove(path);
        const int threads = 8;
        const int perThread = 200;
        const QString payload(300, QLatin1Char('x'));
        QList<QThread*> workers;
        for (int t = 0; t < threads; ++t) {
            workers << QThread::create([=]() {
                for (int i = 0; i < perThread; ++i)
                    myMessageOutput(QtWarningMsg, QMessageLogContext(), QStringLiteral("t%1 %2").arg(t).arg(payload));
            });
            workers.last()->start();
        }
        for (QThread* worker : workers) {
            QVERIFY(worker->wait(30000));
            delete worker;
        }
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        int count = 0;
        const QRegularExpression shape(
            QStringLiteral(R"(^\[\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d\.\d{3}\] WRN t\d x{300}$)"));
        while (!file.atEnd()) {
            const QString line = QString::fromUtf8(file.readLine()).chopped(1);
            QVERIFY2(shape.match(line).hasMatch(), qPrintable(line.left(80)));
            ++count;
        }
        QCOMPARE(count, threads * perThread);
    }

    void unwritableDirectoryIsSilent()
    {
        const QByteArray saved = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", "/proc/tavrin-cannot-exist");
        myMessageOutput(QtCriticalMsg, QMessageLogContext(), QStringLiteral("dropped"));
        qputenv("XDG_DATA_HOME", saved);
    }

    void traceLine()
    {
        const QString path = ALog::tracePath();
        QFile::remove(path);
        ALog::Out(QStringLiteral("connection_.isConnected()"));
        ALog::Out(QStringLiteral("onConnectionError()"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = file.readAll().split('\n');
        QCOMPARE(lines.size(), 3);
        QVERIFY(QRegularExpression(QStringLiteral(R"(^\[\d\d:\d\d:\d\d\] connection_\.isConnected\(\)$)"))
                    .match(QString::fromUtf8(lines[0]))
                    .hasMatch());
        QVERIFY(lines[1].endsWith("] onConnectionError()"));
        file.close();
        QFile::remove(path);
    }

private:
    QTemporaryDir m_dataHome;
};

QTEST_GUILESS_MAIN(TestALog)
#include "tst_ALog.moc"
