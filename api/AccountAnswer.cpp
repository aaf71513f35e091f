#include "AccountAnswer.h"

#include <QStringView>

#include "AnswerReader.h"
#include "SharedValues.h"

namespace {
const QString trueText = QStringLiteral("true");

QByteArray decodeBytes(QStringView base64)
{
    return QByteArray::fromBase64(base64.toLatin1());
}

QString decodeText(QStringView base64)
{
    return QString::fromUtf8(decodeBytes(base64));
}

int decodeNumber(QStringView base64)
{
    return decodeText(base64).toInt();
}

// A port list whose first item is "0" means "none". Empty parts are kept, so an absent attribute gives [""].
QStringList decodePorts(QStringView base64)
{
    QStringList ports = decodeText(base64).split(QLatin1Char(','), Qt::KeepEmptyParts);
    if (ports.first() == QLatin1String("0"))
        ports.clear();
    return ports;
}

// Later parts of the same name overwrite earlier ones; anything but `ver` and `link` is ignored.
void takeUpdatePart(QPair<QString, QString>* update, const QString& name, const QString& text)
{
    if (name == QLatin1String("ver"))
        update->first = decodeText(text);
    else if (name == QLatin1String("link"))
        update->second = decodeText(text);
}

// Turns the attributes of one `vpn` element into a server record. The values that repeat from server to server are
// decoded once and then shared, which makes a list of thousands of servers a fraction of the work and memory.
class ServerDecoder
{
public:
    ServerInfo server(const AnswerReader& answer, QMap<QString, Subscription>& subscriptions)
    {
        const auto attribute = [&answer](const char* name) {
            return answer.attribute(QLatin1String(name));
        };
        ServerInfo server;
        server.name = decodeText(attribute("name"));
        server.title = server.name;
        server.ip = decodeText(attribute("ip"));
        server.tcpPorts = m_ports.value(attribute("tcp"), decodePorts);
        server.udpPorts = m_ports.value(attribute("udp"), decodePorts);
        server.sslPort = m_numbers.value(attribute("ssl"), decodeNumber);
        server.flag = m_texts.value(attribute("flag"), decodeText);
        server.user = m_texts.value(attribute("user"), decodeText);
        // `dns` is sent but not used.
        const bool twoHops = m_numbers.value(attribute("group"), decodeNumber) == 2;
        server.type = twoHops ? ServerInfo::Double : ServerInfo::Standart;
        server.sni = m_texts.value(attribute("sni"), decodeText);
        // Inserting lookup: a login whose `file` has not come yet gets an empty entry and an empty password.
        server.password = subscriptions[server.user].password();
        server.ping = 0;
        server.favorite = false;
        server.protocol = OpenVpnUdp;
        return server;
    }

private:
    SharedValues<QString> m_texts;
    SharedValues<QStringList> m_ports;
    SharedValues<int> m_numbers;
};

// The elements that sign-in and the list refresh share; false for any other element.
class AccountElements
{
public:
    explicit AccountElements(AccountData* account)
        : m_account(account)
    { }

    bool apply(const AnswerReader& answer)
    {
        const QString& tag = answer.name();
        const auto user = [&answer] {
            return decodeText(answer.attribute(QLatin1String("user")));
        };
        if (tag == QLatin1String("vpn")) {
            if (m_firstServer) {
                m_account->servers.clear();
                m_firstServer = false;
            }
            m_account->servers.append(m_decoder.server(answer, m_account->subscriptions));
        } else if (tag == QLatin1String("cert")) {
            m_account->certificates[user()] = decodeBytes(answer.text());
        } else if (tag == QLatin1String("key")) {
            m_account->keys[user()] = decodeBytes(answer.text());
        } else if (tag == QLatin1String("config")) {
            m_account->config = decodeBytes(answer.text());
        } else if (tag == QLatin1String("file")) {
            // Of several `file` elements before the first `vpn`, only the last survives; later ones accumulate.
            if (m_firstServer)
                m_account->subscriptions.clear();
            const QString login = user();
            const QString pass = decodeText(answer.attribute(QLatin1String("pass")));
            // A 32-bit count, as the service has always sent it: no number, or one past 2038, gives 1970.
            const quint32 expiry = quint32(decodeText(answer.attribute(QLatin1String("exp"))).toInt());
            m_account->subscriptions[login] = Subscription(login, pass, QDateTime::fromSecsSinceEpoch(qint64(expiry)));
        } else {
            return false;
        }
        return true;
    }

private:
    AccountData* m_account;
    ServerDecoder m_decoder;
    bool m_firstServer = true;
};

} // namespace

AccountAnswer::Outcome AccountAnswer::readSignIn(const QByteArray& body, AccountData* account)
{
    AnswerReader answer(body);
    AccountElements elements(account);
    while (answer.next()) {
        const QString& tag = answer.name();
        if (tag == QLatin1String("ver")) {
            if (decodeText(answer.text()) != trueText)
                return BadVersion;
            m_lite = answer.attribute(QLatin1String("type")) == QLatin1String("lite");
        } else if (tag == QLatin1String("auth")) {
            if (decodeText(answer.text()) != trueText)
                return WrongLogin;
        } else if (tag == QLatin1String("error")) {
            m_errorText = decodeText(answer.text());
            return Refused;
        } else {
            elements.apply(answer);
        }
    }
    return Complete;
}

void AccountAnswer::readServerList(const QByteArray& body, AccountData* account)
{
    AnswerReader answer(body);
    AccountElements elements(account);
    while (answer.next())
        elements.apply(answer);
}

QPair<QString, QString> AccountAnswer::updateOffer(const QByteArray& body)
{
    AnswerReader answer(body);
    while (answer.next()) {
        if (answer.name() != QLatin1String("upgrade"))
            continue;
        QPair<QString, QString> update;
        for (const AnswerReader::Part& part : answer.parts())
            takeUpdatePart(&update, part.name, part.text);
        if (!update.first.isEmpty() && !update.second.isEmpty())
            return update;
    }
    return {};
}

bool AccountAnswer::firstText(const QByteArray& body, QLatin1String name, QString* text)
{
    AnswerReader answer(body);
    while (answer.next()) {
        if (answer.name() == name) {
            *text = decodeText(answer.text());
            return true;
        }
    }
    return false;
}

QMap<QString, int> AccountAnswer::doubleHopPings(const QByteArray& body)
{
    QMap<QString, int> pings;
    AnswerReader answer(body);
    while (answer.next()) {
        // Plain text and a plain number here, unlike the account answer.
        if (answer.name() == QLatin1String("p"))
            pings.insert(answer.text(), answer.attribute(QLatin1String("p")).toInt());
    }
    return pings;
}
