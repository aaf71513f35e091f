#include <QImageReader>
#include <QtTest>

#include "FlagPicture.h"

// Every picture the interface names must resolve in the built binary, as a picture, not just a file.
class TestResources : public QObject
{
    Q_OBJECT

private slots:
    void namedPicture_data()
    {
        QTest::addColumn<QString>("path");
        const QString names = QStringLiteral(
            "tvn.ico logo.png rotator-orange.png connect-green.svg connect-orange.svg connect-red.svg "
            "shield-green.svg shield-grey.svg location-blue.svg location-info.svg eye-gray-light.svg "
            "eye-gray-dark.svg search.svg delete.svg question-sign-in-circles.svg "
            "attention-sign-in-circles.svg star-empty-black.svg recommended-black.svg flag-placeholder.svg "
            "user.svg key.svg close.svg minimize.svg");
        for (const QString& name : names.split(QLatin1Char(' ')))
            QTest::newRow(qPrintable(name)) << QStringLiteral(":/resources/") + name;
        QTest::newRow("tray icon") << QStringLiteral(":/MainWindow/Images/vpnlogo.ico");
    }

    void namedPicture()
    {
        QFETCH(QString, path);
        QImageReader reader(path);
        const QImage image = reader.read();
        QVERIFY2(!image.isNull(), qPrintable(reader.errorString()));
        QVERIFY(image.width() >= 11 && image.height() >= 11);
    }

    void flags_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<bool>("hasFlag");
        QTest::newRow("upper-case code from the server list") << "US" << true;
        QTest::newRow("code with blanks") << " fr " << true;
        QTest::newRow("empty code gets the placeholder") << "" << false;
        QTest::newRow("package's named pictures are not codes") << "england" << false;
    }

    void flags()
    {
        QFETCH(QString, code);
        QFETCH(bool, hasFlag);
        QCOMPARE(FlagPicture::exists(code), hasFlag);
        QCOMPARE(FlagPicture::resourcePath(code) == QStringLiteral(":/resources/flag-placeholder.svg"), !hasFlag);
        QCOMPARE(FlagPicture::pixmap(code).size(), QSize(FlagPicture::Width, FlagPicture::Height));
    }
};

QTEST_MAIN(TestResources)
#include "tst_Resources.moc"
