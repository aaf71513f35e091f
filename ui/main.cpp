#include <QCommandLineParser>
#include <QDebug>
#include <QMessageBox>
#include <QSslSocket>
#include <QStyleFactory>

#include "ALog.h"
#include "StyleChoice.h"
#include "UnixApplication.h"

// The "a" option is accepted for the autostart entry's sake and changes nothing.
static void testCap(bool autostart)
{
    Q_UNUSED(autostart)
}

int main(int argc, char* argv[])
{
    UnixApplication app(argc, argv);

    const QString style = chooseStyleName(QStyleFactory::keys());
    if (!style.isEmpty()) {
        qDebug() << "Set style" << style;
        QApplication::setStyle(QStyleFactory::create(style));
    } else {
        qDebug() << "Didn't set style";
    }

    if (!QSslSocket::supportsSsl()) {
        QMessageBox::critical(nullptr,
                              QStringLiteral("Error"),
                              QStringLiteral("SSL libs not found! Link the version %1 library")
                                  .arg(QSslSocket::sslLibraryBuildVersionString()),
                              QMessageBox::Ok);
        return 0;
    }

    restrictLogPermissions();
    qInstallMessageHandler(myMessageOutput);

    QCommandLineParser parser;
    const QCommandLineOption hiddenOption(QStringLiteral("h"), QStringLiteral("Run appplication hidden"));
    const QCommandLineOption autostartOption(QStringLiteral("a"), QStringLiteral("Autostart mode"));
    parser.addOption(hiddenOption);
    parser.addOption(autostartOption);
    testCap(parser.isSet(autostartOption));
    parser.process(app);

    QGuiApplication::setQuitOnLastWindowClosed(true);

    const bool hidden = parser.isSet(hiddenOption);
    if (app.launch(hidden))
        return QApplication::exec();
    return 0;
}
