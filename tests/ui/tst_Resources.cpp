#include <QDirIterator>
#include <QIcon>
#include <QImageReader>
#include <QTranslator>
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
        const char* paths[] = {
            ":/MainWindow/Images/vpnlogo.ico",
            ":/resources/tvn.ico",
            ":/resources/logo.png",
            ":/resources/rotator-orange.png",
            ":/resources/connect-green.svg",
            ":/resources/connect-orange.svg",
            ":/resources/connect-red.svg",
            ":/resources/shield-green.svg",
            ":/resources/shield-grey.svg",
            ":/resources/location-blue.svg",
            ":/resources/location-info.svg",
            ":/resources/eye-gray-light.svg",
            ":/resources/eye-gray-dark.svg",
            ":/resources/search.svg",
            ":/resources/delete.svg",
            ":/resources/question-sign-in-circles.svg",
            ":/resources/attention-sign-in-circles.svg",
            ":/resources/star-empty-black.svg",
            ":/resources/recommended-black.svg",
            ":/resources/flag-placeholder.svg",
            ":/resources/user.svg",
            ":/resources/key.svg",
            ":/resources/close.svg",
            ":/resources/minimize.svg",
        };
        for (const char* path : paths)
            QTest::newRow(path) << QString::fromLatin1(path);
    }

    void namedPicture()
    {
        QFETCH(QString, path);
        QImageReader reader(path);
        QVERIFY2(reader.canRead(), qPrintable(reader.errorString()));
        const QImage image = reader.read();
        QVERIFY2(!image.isNull(), qPrintable(reader.errorString()));
        QVERIFY(image.width() >= 11 && image.height() >= 11);
    }

    void styleSheetIsEmbedded()
    {
        QFile style(QStringLiteral(":/resources/style/widgets.qss"));
        QVERIFY(style.open(QIODevice::ReadOnly));
        QVERIFY(style.readAll().contains("QMessageBox"));
    }

    void flags_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<bool>("hasFlag");
        QTest::newRow("lower-case code") << "de" << true;
        QTest::newRow("upper-case code from the server list") << "US" << true;
        QTest::newRow("code with blanks") << " fr " << true;
        QTest::newRow("unknown code gets the placeholder") << "zz" << false;
        QTest::newRow("empty code gets the placeholder") << "" << false;
        QTest::newRow("package's named pictures are not codes") << "england" << false;
    }

    void flags()
    {
        QFETCH(QString, code);
        QFETCH(bool, hasFlag);
        QCOMPARE(FlagPicture::exists(code), hasFlag);
        const QString path = FlagPicture::resourcePath(code);
        QCOMPARE(path == QStringLiteral(":/resources/flag-placeholder.svg"), !hasFlag);
        const QPixmap picture = FlagPicture::pixmap(code);
        QCOMPARE(picture.size(), QSize(FlagPicture::Width, FlagPicture::Height));
    }

    void everyFlagIsATwoLetterPicture()
    {
        int count = 0;
        QDirIterator it(QStringLiteral(":/resources/flags"));
        while (it.hasNext()) {
            it.next();
            QVERIFY2(QRegularExpression(QStringLiteral("^[a-z]{2}\\.png$")).match(it.fileName()).hasMatch(),
                     qPrintable(it.fileName()));
            ++count;
        }
        QVERIFY2(count > 200, qPrintable(QString::number(count)));
    }

    void translation_data()
    {
        QTest::addColumn<QString>("code");
        for (const char* code :
             {"ar", "de", "en", "es", "fr", "hi", "it", "ja", "ko", "pl", "pt", "ru", "tr", "uk", "vi", "zh_CN"})
            QTest::newRow(code) << QString::fromLatin1(code);
    }

    void translation()
    {
        QFETCH(QString, code);
        QTranslator translator;
        QVERIFY(translator.load(QStringLiteral(":/translations/TavrinApp_%1").arg(code)));
        QCOMPARE(translator.language(), code);
    }
};

QTEST_MAIN(TestResources)
#include "tst_Resources.moc"
