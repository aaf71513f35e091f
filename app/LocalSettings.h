#pragma once

#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QVariant>

#include "Keys.h"

class QSettings;

// The per-user settings store (~/.config/QOLV/Tavrin.conf), one per process.
// The file holds the account password in clear, so it is kept readable by
// its owner only, and the sign-in data is flushed to disk as soon as it is set.
class LocalSettings : public QObject
{
    Q_OBJECT

public:
    ~LocalSettings() override;

    static QSharedPointer<LocalSettings> instance();
    // Makes the process-wide instance around `ready` (or a new settings object without it), a settings object with the
    // default arguments that was made and read ahead of time and now lives on this thread; the instance owns it. Where
    // an instance exists already, `ready` is deleted.
    static QSharedPointer<LocalSettings> instance(QSettings* ready);

    QVariant value(QString key);
    void setValue(QString key, QVariant value);
    void createDefaultSettings();

    bool isLiteVersion();
    void setIsLiteVersion(bool lite);

    QString fileName() const;
    void sync();

    // Drops the process-wide instance so that the next instance() reads the
    // file anew, as a restart would. For tests.
    static void resetInstance();

private:
    explicit LocalSettings(QSettings* ready = nullptr);
    void restrictPermissions();

    QSettings* settings = nullptr;
    static QSharedPointer<LocalSettings> _self;
};
