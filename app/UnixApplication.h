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
    void showMainTopmost();

    MainWindow* mainWindow = nullptr;
};
