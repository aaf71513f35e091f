#include "AccountAnswer.h"

#include <QStringView>

#include "AnswerReader.h"
#include "Base64Text.h"
#include "SharedValues.h"

namespace {
const QString trueText = QStringLiteral("true");

QByteArray decodeBytes(QStringView base64)
{
    return QByteArray::fromBase64(base64.toLatin1());
}

int decodeNumber(QStringView base64)
{
    return base64Text(base64).toInt();
}

// A port list whose first item is "0" means "none". Empty parts are kept, so an absent attribute gives [""].
QStringList decodePorts(QStringView base64)
{
    QStringList ports = base64Text(base64).split(QLatin1Char(','), Qt::KeepEmptyParts);
    if (ports.first() == QLatin1String("0"))
        ports.clear();
    return ports;
}

// Later parts of the same name overwrite earlier ones; anything but `ver` and `link` is ignored.
void takeUpdatePart(QPair<QString, QString>* update, const QString& name, const QString& text)
{
    if (name == QLatin1String("ver"))
        update->first = base64Text(text);
    else if (name == QLatin1String("link"))
        update->second = base64Text(text);
}

// Turns the attributes of one `vpn` element into a server record, all but the password, which comes from the
// subscriptions as they are when the record joins the list. The values that repeat from server to server are
// decoded once and then shared, which makes a list of thousands of servers a fraction of the work and memory.
class ServerDecoder
{
public:
    ServerInfo server(const AnswerReader& answer)
    {
        const auto attribute = [&answer](const char* name) {
            return answer.attribute(QLatin1String(name));
        };
        ServerInfo server;
        server.name = base64Text(attribute("name"));
        server.title = server.name;
        server.ip = base64Text(attribute("ip"));
        server.tcpPorts = m_ports.value(attribute("tcp"), decodePorts);
        server.udpPorts = m_ports.value(attribute("udp"), decodePorts);
        server.sslPort = m_numbers.value(attribute("ssl"), decodeNumber);
        server.flag = m_texts.value(attribute("flag"), base64Text);
        server.user = m_texts.value(attribute("user"), base64Text);
        // `dns` is sent but not used.
        const bool twoHops = m_numbers.value(attribute("group"), decodeNumber) == 2;
        server.type = twoHops ? ServerInfo::Double : ServerInfo::Standart;
        server.sni = m_texts.value(attribute("sni"), base64Text);
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

// One account element, decoded; a run of servers is one step.
struct Step
{
    enum Kind { Servers, Certificate, Key, Config, File };
    explicit Step(Kind k = Servers, QString u = QString(), QByteArray b = QByteArray(), Subscription s = Subscription())
        : kind(k)
        , user(std::move(u))
        , bytes(std::move(b))
        , subscription(std::move(s))
    { }

    Kind kind;
    int count = 0;
    QString user;
    QByteArray bytes;
    Subscription subscription;
};

} // namespace

// What has been read of one answer: the decoded account elements in document order, to be applied at its end.
class AccountAnswer::Reading
{
public:
    explicit Reading(const QByteArray* body)
        : reader(body != nullptr ? new AnswerReader(*body) : new AnswerReader)
    { }

    // Takes the current child if it is one of the elements that sign-in and the list refresh share.
    bool take(const AnswerReader& answer)
    {
        const QString& tag = answer.name();
        const auto user = [&answer] {
            return base64Text(answer.attribute(QLatin1String("user")));
        };
        if (tag == QLatin1String("vpn")) {
            m_servers.append(m_decoder.server(answer));
            if (m_steps.isEmpty() || m_steps.constLast().kind != Step::Servers)
                m_steps.append(Step(Step::Servers));
            ++m_steps.last().count;
        } else if (tag == QLatin1String("cert")) {
            m_steps.append(Step(Step::Certificate, user(), decodeBytes(answer.text())));
        } else if (tag == QLatin1String("key")) {
            m_steps.append(Step(Step::Key, user(), decodeBytes(answer.text())));
        } else if (tag == QLatin1String("config")) {
            m_steps.append(Step(Step::Config, QString(), decodeBytes(answer.text())));
        } else if (tag == QLatin1String("file")) {
            const QString login = user();
            const QString pass = base64Text(answer.attribute(QLatin1String("pass")));
            // A 32-bit count, as the service has always sent it: no number, or one past 2038, gives 1970.
            const quint32 expiry = quint32(base64Text(answer.attribute(QLatin1String("exp"))).toInt());
            m_steps.append(Step(Step::File,
                                QString(),
                                QByteArray(),
                                Subscription(login, pass, QDateTime::fromSecsSinceEpoch(qint64(expiry)))));
        } else {
            return false;
        }
        return true;
    }

    void applyTo(AccountData* account)
    {
        bool firstServer = true;
        int server = 0;
        for (Step& step : m_steps) {
            switch (step.kind) {
            case Step::Servers:
                if (firstServer) {
                    account->servers.clear();
                    account->servers.reserve(m_servers.size());
                    firstServer = false;
                }
                for (const int end = server + step.count; server < end; ++server) {
                    ServerInfo& s = m_servers[server];
                    // Inserting lookup: a login whose `file` has not come yet gets an empty entry and an empty
                    // password.
                    s.password = account->subscriptions[s.user].password();
                    account->servers.append(std::move(s));
                }
                break;
            case Step::Certificate:
                account->certificates[step.user] = step.bytes;
                break;
            case Step::Key:
                account->keys[step.user] = step.bytes;
                break;
            case Step::Config:
                account->config = step.bytes;
                break;
            case Step::File:
                // Of several `file` elements before the first `vpn`, only the last survives; later ones accumulate.
                if (firstServer)
                    account->subscriptions.clear();
                account->subscriptions[step.subscription.login()] = step.subscription;
                break;
            }
        }
        m_steps.clear();
        m_servers.clear();
    }

    const std::unique_ptr<AnswerReader> reader;
    // Set by an element that ends the reading (a sign-in's version, credentials or refusal).
    bool stopped = false;

private:
    ServerDecoder m_decoder;
    QVector<ServerInfo> m_servers;
    QVector<Step> m_steps;
};

AccountAnswer::AccountAnswer(Kind kind)
    : m_kind(kind)
    , m_reading(new Reading(nullptr))
{ }

AccountAnswer::~AccountAnswer() = default;

void AccountAnswer::addData(const QByteArray& piece)
{
    if (m_reading->stopped)
        return;
    m_reading->reader->addData(piece);
    readAvailable();
}

AccountAnswer::Outcome AccountAnswer::finish(AccountData* account)
{
    m_reading->reader->endOfData();
    readAvailable();
    m_reading->applyTo(account);
    return m_outcome;
}

void AccountAnswer::readAvailable()
{
    AnswerReader& answer = *m_reading->reader;
    while (!m_reading->stopped && answer.next()) {
        if (m_kind == ServerList) {
            m_reading->take(answer);
            continue;
        }
        const QString& tag = answer.name();
        if (tag == QLatin1String("ver")) {
            if (base64Text(answer.text()) != trueText)
                m_outcome = BadVersion;
            else
                m_lite = answer.attribute(QLatin1String("type")) == QLatin1String("lite");
        } else if (tag == QLatin1String("auth")) {
            if (base64Text(answer.text()) != trueText)
                m_outcome = WrongLogin;
        } else if (tag == QLatin1String("error")) {
            m_errorText = base64Text(answer.text());
            m_outcome = Refused;
        } else {
            m_reading->take(answer);
        }
        m_reading->stopped = m_outcome != Complete;
    }
}

AccountAnswer::Outcome AccountAnswer::readSignIn(const QByteArray& body, AccountData* account)
{
    m_kind = SignIn;
    m_reading.reset(new Reading(&body));
    return finish(account);
}

void AccountAnswer::readServerList(const QByteArray& body, AccountData* account)
{
    m_kind = ServerList;
    m_reading.reset(new Reading(&body));
    finish(account);
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
            *text = base64Text(answer.text());
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
