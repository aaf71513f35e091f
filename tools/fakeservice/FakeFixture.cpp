#include "FakeFixture.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
QByteArray pemBlock(const char* kind, const QString& owner)
{
    // Not a usable credential: the demo only needs something shaped like one.
    const QByteArray body = QByteArray("fake ").append(kind).append(" for ").append(owner.toUtf8()).toBase64();
    return QByteArray("-----BEGIN ")
        .append(kind)
        .append("-----\n")
        .append(body)
        .append("\n-----END ")
        .append(kind)
        .append("-----\n");
}

FakeLogin demoLogin(const QString& user, const QString& pass, qint64 exp)
{
    FakeLogin login;
    login.user = user;
    login.pass = pass;
    login.exp = exp;
    login.cert = pemBlock("CERTIFICATE", user);
    login.key = pemBlock("PRIVATE KEY", user);
    return login;
}

FakeServer demoServer(const QString& name, const QString& ip, const QString& flag, const QString& user, bool twoHops)
{
    FakeServer server;
    server.name = name;
    server.ip = ip;
    server.tcp = QStringLiteral("80,88,8008");
    server.udp = QStringLiteral("1194,118,123,443,9200");
    server.ssl = QStringLiteral("443");
    server.flag = flag;
    server.user = user;
    server.dns = QStringLiteral("10.8.0.1");
    server.group = twoHops ? QStringLiteral("2") : QStringLiteral("1");
    server.sni = QStringLiteral("www.velmora.com");
    return server;
}

QString text(const QJsonObject& object, const char* key)
{
    return object.value(QLatin1String(key)).toString();
}
} // namespace

FakeFixture FakeFixture::demo()
{
    FakeFixture f;
    f.login = QStringLiteral("demo");
    f.password = QStringLiteral("demo");
    f.accountType = QStringLiteral("full");
    f.config = QByteArrayLiteral("client\r\ndev tun\r\nnobind\r\npersist-key\r\npersist-tun\r\n"
                                 "remote-cert-tls server\r\ncipher AES-256-GCM\r\nverb 3\r\n");
    // 2030-01-01 and 2027-06-01, UTC.
    f.logins = {demoLogin(QStringLiteral("vpn-demo1"), QStringLiteral("secret1"), 1893456000),
                demoLogin(QStringLiteral("vpn-demo2"), QStringLiteral("secret2"), 1811808000)};
    // Documentation addresses: nothing outside a test namespace ever answers on them.
    const QString one = QStringLiteral("vpn-demo1");
    const QString two = QStringLiteral("vpn-demo2");
    f.servers = {
        demoServer(QStringLiteral("Frankfurt"), QStringLiteral("192.0.2.10"), QStringLiteral("de"), one, false),
        demoServer(QStringLiteral("Amsterdam"), QStringLiteral("192.0.2.11"), QStringLiteral("nl"), one, false),
        demoServer(QStringLiteral("Zurich"), QStringLiteral("192.0.2.12"), QStringLiteral("ch"), one, false),
        demoServer(QStringLiteral("New York"), QStringLiteral("198.51.100.20"), QStringLiteral("us"), one, false),
        demoServer(QStringLiteral("Tokyo"), QStringLiteral("203.0.113.30"), QStringLiteral("jp"), one, false),
        demoServer(QStringLiteral("Paris - Oslo"), QStringLiteral("192.0.2.40"), QStringLiteral("no"), one, true),
        demoServer(
            QStringLiteral("Madrid - Toronto"), QStringLiteral("198.51.100.41"), QStringLiteral("ca"), one, true),
        demoServer(QStringLiteral("London"), QStringLiteral("192.0.2.50"), QStringLiteral("gb"), two, false),
        demoServer(QStringLiteral("Stockholm"), QStringLiteral("192.0.2.51"), QStringLiteral("se"), two, false),
        demoServer(QStringLiteral("Vienna - Prague"), QStringLiteral("192.0.2.52"), QStringLiteral("cz"), two, true),
    };
    f.upgradeVersion = QStringLiteral("3.7.0");
    f.upgradeLink = QStringLiteral("/download/update.deb");
    f.timezone = QStringLiteral("Europe/Berlin");
    f.buyLink = QStringLiteral("https://velmora.com/buy");
    f.doublePings = {{QStringLiteral("Paris - Oslo"), 25}, {QStringLiteral("Madrid - Toronto"), 40}};
    return f;
}

bool FakeFixture::fromJson(const QByteArray& json, FakeFixture* fixture, QString* error)
{
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(json, &parseError);
    if (!doc.isObject()) {
        *error = parseError.error != QJsonParseError::NoError ? parseError.errorString()
                                                              : QStringLiteral("the fixture is not a JSON object");
        return false;
    }
    const QJsonObject root = doc.object();
    FakeFixture f;
    f.login = text(root, "login");
    f.password = text(root, "password");
    f.versionAccepted = root.value(QLatin1String("versionAccepted")).toBool(true);
    f.accountType = text(root, "accountType");
    f.error = text(root, "error");
    f.config = text(root, "config").toUtf8();
    for (const QJsonValue& value : root.value(QLatin1String("logins")).toArray()) {
        const QJsonObject o = value.toObject();
        FakeLogin login;
        login.user = text(o, "user");
        login.pass = text(o, "pass");
        login.exp = qint64(o.value(QLatin1String("exp")).toDouble());
        login.cert = text(o, "cert").toUtf8();
        login.key = text(o, "key").toUtf8();
        f.logins.append(login);
    }
    for (const QJsonValue& value : root.value(QLatin1String("servers")).toArray()) {
        const QJsonObject o = value.toObject();
        FakeServer s;
        s.name = text(o, "name");
        s.ip = text(o, "ip");
        s.tcp = text(o, "tcp");
        s.udp = text(o, "udp");
        s.ssl = text(o, "ssl");
        s.flag = text(o, "flag");
        s.user = text(o, "user");
        s.dns = text(o, "dns");
        s.group = text(o, "group");
        s.sni = text(o, "sni");
        f.servers.append(s);
    }
    const QJsonObject upgrade = root.value(QLatin1String("upgrade")).toObject();
    f.upgradeVersion = text(upgrade, "version");
    f.upgradeLink = text(upgrade, "link");
    f.timezone = text(root, "timezone");
    f.buyLink = text(root, "buyLink");
    const QJsonObject pings = root.value(QLatin1String("doublePings")).toObject();
    for (auto it = pings.begin(); it != pings.end(); ++it)
        f.doublePings.insert(it.key(), it.value().toInt());
    f.packageSize = root.value(QLatin1String("packageSize")).toInt(f.packageSize);
    f.packageFile = text(root, "packageFile");
    *fixture = f;
    return true;
}

QByteArray FakeFixture::toJson() const
{
    QJsonObject root;
    root.insert(QStringLiteral("login"), login);
    root.insert(QStringLiteral("password"), password);
    root.insert(QStringLiteral("versionAccepted"), versionAccepted);
    root.insert(QStringLiteral("accountType"), accountType);
    root.insert(QStringLiteral("error"), error);
    root.insert(QStringLiteral("config"), QString::fromUtf8(config));
    QJsonArray loginArray;
    for (const FakeLogin& l : logins) {
        loginArray.append(QJsonObject {{QStringLiteral("user"), l.user},
                                       {QStringLiteral("pass"), l.pass},
                                       {QStringLiteral("exp"), double(l.exp)},
                                       {QStringLiteral("cert"), QString::fromUtf8(l.cert)},
                                       {QStringLiteral("key"), QString::fromUtf8(l.key)}});
    }
    root.insert(QStringLiteral("logins"), loginArray);
    QJsonArray serverArray;
    for (const FakeServer& s : servers) {
        serverArray.append(QJsonObject {{QStringLiteral("name"), s.name},
                                        {QStringLiteral("ip"), s.ip},
                                        {QStringLiteral("tcp"), s.tcp},
                                        {QStringLiteral("udp"), s.udp},
                                        {QStringLiteral("ssl"), s.ssl},
                                        {QStringLiteral("flag"), s.flag},
                                        {QStringLiteral("user"), s.user},
                                        {QStringLiteral("dns"), s.dns},
                                        {QStringLiteral("group"), s.group},
                                        {QStringLiteral("sni"), s.sni}});
    }
    root.insert(QStringLiteral("servers"), serverArray);
    root.insert(QStringLiteral("upgrade"),
                QJsonObject {{QStringLiteral("version"), upgradeVersion}, {QStringLiteral("link"), upgradeLink}});
    root.insert(QStringLiteral("timezone"), timezone);
    root.insert(QStringLiteral("buyLink"), buyLink);
    QJsonObject pings;
    for (auto it = doublePings.begin(); it != doublePings.end(); ++it)
        pings.insert(it.key(), it.value());
    root.insert(QStringLiteral("doublePings"), pings);
    root.insert(QStringLiteral("packageSize"), packageSize);
    root.insert(QStringLiteral("packageFile"), packageFile);
    return QJsonDocument(root).toJson();
}
