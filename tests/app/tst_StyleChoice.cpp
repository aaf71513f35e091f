#include <QtTest>

#include "StyleChoice.h"

class TestStyleChoice : public QObject
{
    Q_OBJECT

private slots:
    void choose_data()
    {
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<QString>("expected");
        QTest::newRow("last gtk key wins over Fusion") << QStringList {"GTK+", "Fusion", "gtk3"} << "gtk3";
        QTest::newRow("Fusion alone") << QStringList {"Windows", "Fusion"} << "Fusion";
        QTest::newRow("lower-case fusion sets nothing") << QStringList {"Windows", "fusion"} << QString();
    }
    void choose()
    {
        QFETCH(QStringList, keys);
        QTEST(chooseStyleName(keys), "expected");
    }
};

QTEST_APPLESS_MAIN(TestStyleChoice)
#include "tst_StyleChoice.moc"
