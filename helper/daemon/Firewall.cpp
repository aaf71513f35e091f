#include "Firewall.h"

#include "HelperPaths.h"
#include "Nft.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

Firewall::Firewall(const QString& stateDir)
    : m_stateDir(stateDir)
{ }

QString Firewall::stateFile() const
{
    return m_stateDir + QStringLiteral("/firewall.json");
}

bool Firewall::on(const FirewallRequest& request)
{
    m_error.clear();
    FirewallRules rules;
    if (!rules.build(request)) {
        m_error = rules.error();
        return false;
    }
    if (!Nft::run(rules.script(), m_error))
        return false;
    FirewallRequest last;
    bool active = false;
    bool atStart = false;
    load(last, active, atStart);
    save(request, true, atStart);
    return true;
}

bool Firewall::off()
{
    m_error.clear();
    if (!Nft::run(FirewallRules::removeScript(), m_error))
        return false;
    FirewallRequest last;
    bool active = false;
    bool atStart = false;
    if (load(last, active, atStart))
        save(FirewallRequest(), false, atStart); // nothing to put back once switched off
    return true;
}

bool Firewall::installed()
{
    return listSucceeds(QStringLiteral("list table inet tavrin"));
}

bool Firewall::supported()
{
    return listSucceeds(QStringLiteral("list tables"));
}

bool Firewall::listSucceeds(const QString& command)
{
    QString ignored;
    return Nft::run(command + QLatin1Char('\n'), ignored);
}

bool Firewall::enableOnStart()
{
    FirewallRequest last;
    bool active = false;
    bool atStart = false;
    load(last, active, atStart);
    return save(last, active, true);
}

void Firewall::restoreAtStart()
{
    FirewallRequest last;
    bool active = false;
    bool atStart = false;
    if (!load(last, active, atStart) || !atStart || !active)
        return;
    FirewallRules rules;
    const bool ok = rules.build(last) && Nft::run(rules.script(), m_error);
    qInfo().noquote() << "firewall: re-applying the last rules at start:" << (ok ? "done" : "failed") << m_error;
}

bool Firewall::save(const FirewallRequest& r, bool active, bool atStart)
{
    HelperPaths::makePrivateDir(m_stateDir);
    QJsonObject o {{QStringLiteral("active"), active},
                   {QStringLiteral("enableOnStart"), atStart},
                   {QStringLiteral("addresses"), r.addresses},
                   {QStringLiteral("interface"), r.interfaceName},
                   {QStringLiteral("killConnect"), r.killConnect},
                   {QStringLiteral("ipv6Block"), r.ipv6Block},
                   {QStringLiteral("allowLocalIp"), r.allowLocalIp},
                   {QStringLiteral("changeTimezone"), r.changeTimezone},
                   {QStringLiteral("idle"), r.idle}};
    QSaveFile file(stateFile());
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QJsonDocument(o).toJson());
    return file.commit();
}

bool Firewall::load(FirewallRequest& r, bool& active, bool& atStart) const
{
    QFile file(stateFile());
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QJsonObject o = QJsonDocument::fromJson(file.readAll()).object();
    if (o.isEmpty())
        return false;
    active = o.value(QStringLiteral("active")).toBool();
    atStart = o.value(QStringLiteral("enableOnStart")).toBool();
    r.addresses = o.value(QStringLiteral("addresses")).toString();
    r.interfaceName = o.value(QStringLiteral("interface")).toString();
    r.killConnect = o.value(QStringLiteral("killConnect")).toBool();
    r.ipv6Block = o.value(QStringLiteral("ipv6Block")).toBool();
    r.allowLocalIp = o.value(QStringLiteral("allowLocalIp")).toBool();
    r.changeTimezone = o.value(QStringLiteral("changeTimezone")).toBool();
    r.idle = o.value(QStringLiteral("idle")).toBool();
    return true;
}
