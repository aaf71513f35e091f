#include "UnixApplication.h"

#include <QDebug>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QSettings>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

#include "LocalSettings.h"
#include "MainWindow.h"
#include "ServiceTls.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {
const QString wakeUpMessage = QStringLiteral("Wake up!");

int quitPipe[2] = {-1, -1};

void onQuitSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t n = ::write(quitPipe[1], &byte, 1);
}

// The first network access manager of a process loads Qt's network plugins, the service's TLS settings load the TLS
// library (and TAVRIN_CA_FILE where it is set), and the settings file is parsed whole at its first read, cached server
// list and all: together tens of milliseconds, and more with a long list. The single-instance check spends most of
// its time waiting, so all of it happens meanwhile on a thread of its own. What the first two load is process-wide;
// the settings object is handed to the store once this process knows it is the only instance (only that one may
// reset the store).
class StartWarmUp : public QThread
{
public:
    // Hands over the settings read ahead, moved to the thread that made this one; after wait().
    QSettings* takeSettings() { return std::exchange(m_settings, nullptr); }
    ~StartWarmUp() override { delete m_settings; }

protected:
    void run() override
    {
        QNetworkAccessManager manager;
        ServiceTls::configuration();
        m_settings = new QSettings();
        m_settings->value(Keys::RememberUser);
        m_settings->moveToThread(m_target);
    }

private:
    QThread* const m_target = QThread::currentThread();
    QSettings* m_settings = nullptr;
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

    StartWarmUp warmUp;
    warmUp.start();
    const bool alone = oneInstance();
    warmUp.wait();
    if (!alone)
        return false;

    // The store resets itself at every start unless the user is remembered; only the instance may do that.
    LocalSettings::instance(warmUp.takeSettings());
    mainWindow = new MainWindow();
    quitOnSignals();
    mainWindow->checkAutologin();
    if (hidden)
        mainWindow->onHide();
    else
        mainWindow->onShow();
    return true;
}

void UnixApplication::quitOnSignals()
{
    if (::pipe2(quitPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    auto* notifier = new QSocketNotifier(quitPipe[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [] {
        char byte;
        while (::read(quitPipe[0], &byte, 1) > 0) { }
        qDebug() << "Quit on a signal";
        QCoreApplication::quit();
    });
    struct sigaction action
    { };
    action.sa_handler = onQuitSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int signal : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(signal, &action, nullptr);
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
