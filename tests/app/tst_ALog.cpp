#include <QtTest>

#include <QTemporaryDir>
#include <QThread>

#include "ALog.h"

Q_DECLARE_METATYPE(QtMsgType)

namespace {
QList<QByteArray> linesOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QList<QByteArray>();
}
} // namespace

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
        QTest::addColumn<QtMsgType>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("expected"); // after "[01.02.2023 04:05:06.007]"
        QTest::newRow("debug") << QtDebugMsg << "hello" << QByteArray(" DBG hello\n");
        QTest::newRow("warning") << QtWarningMsg << "w" << QByteArray(" WRN w\n");
        QTest::newRow("critical") << QtCriticalMsg << "c" << QByteArray(" CRT c\n");
        QTest::newRow("fatal") << QtFatalMsg << "f" << QByteArray(" FTL f\n");
        QTest::newRow("info has two blanks and no tag") << QtInfoMsg << "i" << QByteArray("  i\n");
        QTest::newRow("embedded line feeds kept, one added") << QtDebugMsg << "a\nb\n" << QByteArray(" DBG a\nb\n\n");
        QTest::newRow("non-ASCII as UTF-8") << QtDebugMsg << "Füße"
                                            << QByteArray(" DBG F\xc3\xbc\xc3\x9f"
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

    void unwritableDirectoryIsSilent()
    {
        const QByteArray saved = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", "/proc/tavrin-cannot-exist");
        myMessageOutput(QtCriticalMsg, QMessageLogContext(), QStringLiteral("dropped"));
        qputenv("XDG_DATA_HOME", saved);
    }

    // The handler takes no lock: each line must still arrive whole.
    void handlerFromSeveralThreadsKeepsLinesWhole()
    {
        // The first message also creates the missing data directory with its parents.
        QVERIFY(QDir(m_dataHome.path() + QStringLiteral("/not")).removeRecursively());
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
        const QString path = applicationLogPath();
        QVERIFY(path.startsWith(m_dataHome.path() + QStringLiteral("/not/yet/")));
        QList<QByteArray> lines = linesOf(path);
        QCOMPARE(lines.takeLast(), QByteArray());
        QCOMPARE(lines.size(), 8 * 200);
        const QRegularExpression shape(
            QStringLiteral(R"(^\[\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d\.\d{3}\] WRN t\d x{300}$)"));
        for (const QByteArray& line : qAsConst(lines))
            QVERIFY2(shape.match(QString::fromUtf8(line)).hasMatch(), line.left(80).constData());
    }

    void traceLine()
    {
        const QString path = ALog::tracePath();
        QFile::remove(path);
        ALog::Out(QStringLiteral("connection_.isConnected()"));
        ALog::Out(QStringLiteral("onConnectionError()"));
        const QList<QByteArray> lines = linesOf(path);
        QFile::remove(path);
        QCOMPARE(lines.size(), 3);
        QVERIFY(QRegularExpression(QStringLiteral(R"(^\[\d\d:\d\d:\d\d\] connection_\.isConnected\(\)$)"))
                    .match(QString::fromUtf8(lines[0]))
                    .hasMatch());
        QVERIFY(lines[1].endsWith("] onConnectionError()"));
    }

private:
    QTemporaryDir m_dataHome;
};

QTEST_GUILESS_MAIN(TestALog)
#include "tst_ALog.moc"
