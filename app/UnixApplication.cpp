#include "UnixApplication.h"

#include <QDebug>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QThread>
#include <QTimer>

#include "LocalSettings.h"
#include "MainWindow.h"
#include "ServiceTls.h"

namespace {
const QString wakeUpMessage = QStringLiteral("Wake up!");

// The first network access manager of a process loads Qt's network plugins, and the service's TLS settings load
// the TLS library and read the system's certificate authorities and TAVRIN_CA_FILE: together tens of
// milliseconds. The single-instance check spends most of its time waiting, so both happen meanwhile on a thread
// of their own. What they load is process-wide and is there when the service client sends its first request.
class NetworkWarmUp : public QThread
{
protected:
    void run() override
    {
        QNetworkAccessManager manager;
        ServiceTls::configuration();
    }
};
} // namespace

UnixApplication::UnixApplication(int& argc, char** argv)
    : SingleApplication(QStringLiteral("Pellwick"), argc, argv)
{
    isRunning();
    setOrganizationName(QStringLiteral("QOLV"));
    setApplicationName(QStringLiteral("Tavrin"));
    mainWindow = nullptr;
    connect(this, &SingleApplication::messageReceived, this, &UnixApplication::handleMessage);
}

UnixApplication::~UnixApplication()
{
    delete mainWindow;
    mainWindow = nullptr;
}

bool UnixApplication::launch(bool hidden)
{
    qDebug().noquote() << QString(64, QLatin1Char('-'));
    qDebug().noquote() << applicationName() + QLatin1Char(' ') + applicationVersion()
            + QStringLiteral(" started. Build date: ") + QStringLiteral(__DATE__ ", " __TIME__);

    NetworkWarmUp warmUp;
    warmUp.start();
    const bool alone = oneInstance();
    warmUp.wait();
    if (!alone)
        return false;

    // The store resets itself at every start unless the user is remembered; only the instance may do that.
    LocalSettings::instance();
    mainWindow = new MainWindow();
    mainWindow->checkAutologin();
    if (hidden)
        mainWindow->onHide();
    else
        mainWindow->onShow();
    return true;
}

bool UnixApplication::oneInstance()
{
    // Two attempts: an instance that is just starting may not listen yet.
    for (int attempt = 0; attempt < 2; ++attempt) {
        processEvents();
        qDebug() << "Try wake up!";
        if (sendMessage(wakeUpMessage, 500))
            return false;
        qDebug() << "Not one";
        QEventLoop pause;
        QTimer::singleShot(100, &pause, &QEventLoop::quit);
        pause.exec();
    }
    return true;
}

void UnixApplication::handleMessage(const QString& message)
{
    qDebug() << "Wake up!";
    if (message == wakeUpMessage && mainWindow) {
        mainWindow->onShow();
        mainWindow->activateWindow();
        showMainTopmost();
    }
}

void UnixApplication::showMainTopmost()
{
    mainWindow->setWindowFlags(mainWindow->windowFlags() | Qt::CustomizeWindowHint | Qt::WindowStaysOnTopHint);
    mainWindow->show();
}
