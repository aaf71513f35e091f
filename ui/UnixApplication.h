#pragma once

#include "SingleApplication.h"

class MainWindow;

class UnixApplication : public SingleApplication
{
    Q_OBJECT

public:
    UnixApplication(int& argc, char** argv);
    ~UnixApplication() override;

    bool launch(bool hidden);

public slots:
    void handleMessage(const QString& message);

private:
    bool oneInstance();
    // SIGTERM, SIGINT and SIGHUP (log-out, shut-down, kill) take the path of Quit: the tunnel is
    // closed, the kill switch lifted and the time zone restored before the process ends.
    void quitOnSignals();
    void showMainTopmost();

    MainWindow* mainWindow = nullptr;
};
