#pragma once

#include <QApplication>

class LocalPeer;

// A QApplication that knows whether another instance of the same id runs for
// this user, and passes text messages to it.
class SingleApplication : public QApplication
{
    Q_OBJECT

public:
    SingleApplication(const QString& id, int& argc, char** argv);
    ~SingleApplication() override;

    bool isRunning();
    bool sendMessage(const QString& message, int timeout = 5000);

signals:
    void messageReceived(const QString& message);

private:
    LocalPeer* m_peer;
};
