#include <QtTest>

#include <QTemporaryDir>
#include <QThread>

#include "ALog.h"

Q_DECLARE_METATYPE(QtMsgType)

class TestALog : public QObject
{
    Q_OBJECT

private slots:
    void lineFormat_data()
    {
        QTest::addColumn<QtMsgType>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("expected"); // after "[01.02.2023 04:05:06.007]"
        QTest::newRow("debug") << QtDebugMsg << QStringLiteral("hello") << QByteArray(" DBG hello\n");
        QTest::newRow("fatal") << QtFatalMsg << QStringLiteral("f") << QByteArray(" FTL f\n");
        QTest::newRow("info has two blanks and no tag") << QtInfoMsg << QStringLiteral("i") << QByteArray("  i\n");
        QTest::newRow("embedded line feeds kept, one added")
            << QtDebugMsg << QStringLiteral("a\nb\n") << QByteArray(" DBG a\nb\n\n");
        QTest::newRow("non-ASCII as UTF-8") << QtCriticalMsg << QStringLiteral("F\u00fc\u00dfe")
                                            << QByteArray(" CRT F\xc3\xbc\xc3\x9f"
                                                          "e\n");
    }
    void lineFormat()
    {
        QFETCH(QtMsgType, type);
        QFETCH(QString, text);
        QFETCH(QByteArray, expected);
        const QDateTime when(QDate(2023, 2, 1), QTime(4, 5, 6, 7));
        QCOMPARE(formatLogLine(type, when, text), "[01.02.2023 04:05:06.007]" + expected);
    }

    // The handler takes no lock: each line must still arrive whole.
    void handlerFromSeveralThreadsKeepsLinesWhole()
    {
        QTemporaryDir dataHome;
        // An unwritable place is silently skipped; a missing one is made with its parents.
        qputenv("XDG_DATA_HOME", "/proc/tavrin-cannot-exist");
        myMessageOutput(QtCriticalMsg, QMessageLogContext(), QStringLiteral("dropped"));
        qputenv("XDG_DATA_HOME", (dataHome.path() + QStringLiteral("/not/yet")).toLocal8Bit());
        const QString payload(300, QLatin1Char('x'));
        QList<QThread*> workers;
        for (int t = 0; t < 8; ++t) {
            workers << QThread::create([=]() {
                for (int i = 0; i < 200; ++i)
                    myMessageOutput(QtWarningMsg, QMessageLogContext(), QStringLiteral("t%1 %2").arg(t).arg(payload));
            });
            workers.last()->start();
        }
        for (QThread* worker : workers) {
            QVERIFY(worker->wait(30000));
            delete worker;
        }
        QFile log(applicationLogPath());
        QVERIFY(log.fileName().startsWith(dataHome.path() + QStringLiteral("/not/yet/")));
        QVERIFY(log.open(QIODevice::ReadOnly));
        QList<QByteArray> lines = log.readAll().split('\n');
        QCOMPARE(lines.takeLast(), QByteArray());
        QCOMPARE(lines.size(), 8 * 200);
        const QRegularExpression shape(
            QStringLiteral(R"(^\[\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d\.\d{3}\] WRN t\d x{300}$)"));
        for (const QByteArray& line : qAsConst(lines))
            QVERIFY2(shape.match(QString::fromUtf8(line)).hasMatch(), line.left(80).constData());
    }
};

QTEST_GUILESS_MAIN(TestALog)
#include "tst_ALog.moc"
