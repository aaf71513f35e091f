#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QScopedPointer>
#include <QString>

// One instance per user: the first process to take the lock file owns the
// name and receives messages on a local socket; later processes deliver a
// message to it. Messages are length-prefixed UTF-8, capped in size.
class LocalPeer : public QObject
{
    Q_OBJECT

public:
    static constexpr quint32 MaxMessageSize = 64 * 1024;

    explicit LocalPeer(const QString& appId, QObject* parent = nullptr);
    ~LocalPeer() override;

    // True while another live process owns the name.
    bool isClient();
    // Delivers a message to the owner; true once the owner acknowledged it.
    bool sendMessage(const QString& message, int timeoutMs);

    QString socketName() const { return m_socketName; }
    QString lockFileName() const { return m_lockName; }

signals:
    void messageReceived(const QString& message);

private slots:
    void onNewConnection();

private:
    QString m_socketName;
    QString m_lockName;
    QScopedPointer<QLockFile> m_lock;
    QLocalServer m_server;
    bool m_owner = false;
};
