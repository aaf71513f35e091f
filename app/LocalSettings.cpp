#include "LocalSettings.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

QSharedPointer<LocalSettings> LocalSettings::_self;

namespace {
// Keys whose loss after a crash would sign the user out or change the account in use.
bool isSignInKey(const QString& key)
{
    return key == Keys::Login || key == Keys::Passwd || key == Keys::RememberUser || key == Keys::VpnLogin;
}

const QFileDevice::Permissions ownerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
const QFileDevice::Permissions groupOrOther = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup
    | QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;

void makeOwnerOnly(QFile& file)
{
    if (file.exists() && (file.permissions() & groupOrOther))
        file.setPermissions(ownerOnly);
}
} // namespace

LocalSettings::LocalSettings(QSettings* ready)
{
    settings = ready ? ready : new QSettings();
    restrictPermissions();
    if (settings->status() != QSettings::NoError) {
        // A damaged file would never be rewritten; keep it aside for inspection and start afresh.
        const QString name = settings->fileName();
        delete settings;
        settings = nullptr;
        const QString aside = name + QStringLiteral(".damaged");
        QFile::remove(aside);
        QFile::rename(name, aside);
        qWarning() << "Settings file unreadable, moved to" << aside;
        settings = new QSettings();
        restrictPermissions();
    }
    if (!settings->value(Keys::RememberUser, false).toBool())
        createDefaultSettings();
}

LocalSettings::~LocalSettings()
{
    delete settings;
}

QSharedPointer<LocalSettings> LocalSettings::instance()
{
    return instance(nullptr);
}

QSharedPointer<LocalSettings> LocalSettings::instance(QSettings* ready)
{
    if (_self)
        delete ready;
    else
        _self = QSharedPointer<LocalSettings>(new LocalSettings(ready));
    return _self;
}

void LocalSettings::resetInstance()
{
    _self.reset();
}

void LocalSettings::restrictPermissions()
{
    // QSettings rewrites the file through a temporary file that takes over the
    // permissions of the existing one, so a file created 0600 stays 0600.
    const QString name = settings->fileName();
    QFile file(name);
    if (!file.exists()) {
        QDir().mkpath(QFileInfo(name).absolutePath());
        if (file.open(QIODevice::WriteOnly))
            file.close();
    }
    makeOwnerOnly(file);
}

QVariant LocalSettings::value(QString key)
{
    return settings->value(key, QVariant());
}

void LocalSettings::setValue(QString key, QVariant value)
{
    // Sign-in keys reach the disk at once. Writing back the value they already hold (every automatic sign-in
    // does) needs no flush, which would rewrite the whole file with its cached account.
    const bool changed = !settings->contains(key) || settings->value(key) != value;
    settings->setValue(key, value);
    if (changed && isSignInKey(key))
        sync();
}

void LocalSettings::createDefaultSettings()
{
    const QString empty;
    settings->setValue(Keys::Login, empty);
    settings->setValue(Keys::Passwd, empty);
    settings->setValue(Keys::RememberUser, false);
    settings->setValue(Keys::ConnectOnStart, false);
    settings->setValue(Keys::LaunchOnStart, false);
    settings->setValue(Keys::OvpnProtocol, QStringLiteral("tcp"));
    settings->setValue(Keys::FavoriteServersTcp, empty);
    settings->setValue(Keys::FavoriteServersUdp, empty);
    settings->setValue(Keys::FavoriteServersSsl, empty);
    settings->setValue(Keys::LastLocation, empty);
    settings->setValue(Keys::CachedServers, empty);
    settings->setValue(Keys::CachedCertif, empty);
    settings->setValue(Keys::CachedUsers, empty);
    settings->setValue(Keys::KillConnect, false);
    settings->setValue(Keys::Flag, 1);
    settings->setValue(Keys::IPv6LeakProtect, true);
    settings->setValue(Keys::AllowLocalDevices, false);
    settings->setValue(Keys::ChangeTimezone, false);
    settings->setValue(Keys::VpnLogin, empty);
    // A reset signs the user out: that must survive a crash as well.
    sync();
}

bool LocalSettings::isLiteVersion()
{
    return (settings->value(Keys::Flag, 0).toInt() & 1) != 0;
}

void LocalSettings::setIsLiteVersion(bool lite)
{
    int flag = settings->value(Keys::Flag, 0).toInt();
    if (lite)
        flag |= 1;
    else
        flag &= ~1;
    settings->setValue(Keys::Flag, flag);
}

QString LocalSettings::fileName() const
{
    return settings->fileName();
}

void LocalSettings::sync()
{
    settings->sync();
    // A file that another program widened is narrowed again at the next write.
    QFile file(settings->fileName());
    makeOwnerOnly(file);
}
