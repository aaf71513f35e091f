#pragma once

#include <QMutex>
#include <QObject>
#include <QStringList>

// Stand-in for the desktop panel's StatusNotifierWatcher, where a tray icon registers. Run it on a
// connection and thread of its own: the tray asks it blocking questions from the GUI thread.
class StatusNotifierWatcherDouble : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)

public:
    bool isHostRegistered() const { return true; }
    QStringList items() const
    {
        QMutexLocker lock(&m_mutex);
        return m_items;
    }

public slots:
    void RegisterStatusNotifierItem(const QString& service)
    {
        QMutexLocker lock(&m_mutex);
        m_items.append(service);
    }

private:
    mutable QMutex m_mutex;
    QStringList m_items;
};
