#include "TunnelOwner.h"

#include "HelperPaths.h"

#include <QDebug>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

TunnelOwner::TunnelOwner(const QString& stateDir)
    : m_file(stateDir + QStringLiteral("/owner.json"))
{ }

bool TunnelOwner::claim(qint64 uid, QString& why)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (uid != 0 && m_owner != Nobody && m_owner != uid) {
        why = QStringLiteral("the tunnel is held by uid %1").arg(m_owner);
        return false;
    }
    if (m_owner == Nobody) {
        m_owner = uid;
        save();
    }
    ++m_pending;
    return true;
}

void TunnelOwner::update(Holding holding, bool held, bool endsClaim)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (endsClaim)
        --m_pending;
    const qint64 owner = m_owner;
    const int wasHeld = m_held;
    m_held = held ? (m_held | holding) : (m_held & ~holding);
    if (m_held == 0 && m_pending == 0 && m_owner != Nobody) {
        qInfo() << "tunnel: uid" << m_owner << "holds nothing any more";
        m_owner = Nobody;
    }
    // Most requests change nothing that is kept: no write for them.
    if (m_owner != owner || m_held != wasHeld)
        save();
}

qint64 TunnelOwner::owner() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_owner;
}

void TunnelOwner::save() const
{
    QSaveFile file(m_file);
    const QJsonObject o {{QStringLiteral("owner"), m_owner}, {QStringLiteral("held"), m_held}};
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(o).toJson(QJsonDocument::Compact)) < 0
        || !file.commit())
        qWarning().noquote() << "tunnel: cannot keep the owner in" << m_file;
}

void TunnelOwner::load(bool firewallInForce)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    QFile file(m_file);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QJsonObject o = QJsonDocument::fromJson(file.readAll()).object();
    m_held = firewallInForce ? o.value(QStringLiteral("held")).toInt() & Firewall : 0;
    m_owner = m_held ? qint64(o.value(QStringLiteral("owner")).toDouble(Nobody)) : Nobody;
    if (m_owner < 0) {
        m_owner = Nobody;
        m_held = 0;
    }
    if (m_owner != Nobody)
        qInfo() << "tunnel: held by uid" << m_owner << "since before this start";
    save();
}
