#include "OpenVpnConfigCheck.h"

#include <QHostAddress>
#include <QList>
#include <QRegularExpression>

#include <algorithm>
#include <array>

// How OpenVPN 2.6.14 (Debian 12) reads a file, tried on the program itself:
// - fgets() hands out lines of at most 256 bytes, 255 inside a <tag> block. A directive line
//   that fills the 256 bytes is fatal ("Maximum option line length"), but a longer block line
//   is silently split, and the second part may close the block: 255 bytes followed by </ca>
//   end it early, and the lines after it are read as directives.
// - A byte order mark is skipped on line 1 only; elsewhere it is part of the first word.
// - \ plugin x.so, \ config f, blanks before plugin, 'plugin', "plugin" and --plugin all load
//   the plugin (or read the file): a backslash before a blank between words is dropped, quotes
//   only group, one leading "--" is stripped. Names are matched case for case.
// - "#" and ";" start a comment only where a word would start, after a backslash too ("\#x");
//   within a word they are plain characters.
// - CR, tab, vertical tab and form feed are blanks, so CR LF files read as LF files, but a lone
//   CR does not end a line: "verb 3<CR>plugin x" is one line of four words.
// - A backslash before anything but a backslash, a double quote or a blank, an open quote, or a
//   backslash at the very end of the file is fatal. A backslash before the line feed keeps the
//   line feed in the word. Words after the 16th on a line are ignored unread.
// - A line whose only word is <tag> (also --<tag>, "<tag>" or <tag> followed by a comment) opens
//   a block; its lines are taken raw up to the first one that begins with </tag> after leading
//   blanks, so "</ca>junk" closes it too. A missing end tag is fatal.
// - A zero byte ends the line for OpenVPN; whatever follows on that line is never seen.

namespace {

constexpr int MaxLineLength = 254; // bytes before the line feed, inside blocks and out
constexpr int MaxWords = 16;

// isspace() in the C locale.
bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

bool matches(const QString& text, const QString& pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

bool isIpv4(const QString& text)
{
    static const QString byte = QStringLiteral("(25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])");
    return matches(text, QStringLiteral("(%1\\.){3}%1").arg(byte));
}

bool isIpv6(const QString& text)
{
    QHostAddress address;
    return matches(text, QStringLiteral("[0-9A-Fa-f:.]{2,45}")) && address.setAddress(text)
        && address.protocol() == QAbstractSocket::IPv6Protocol;
}

bool isHostName(const QString& text)
{
    static const QString label = QStringLiteral("[A-Za-z0-9_]([A-Za-z0-9_-]{0,61}[A-Za-z0-9_])?");
    return text.size() <= 253 && matches(text, QStringLiteral("%1(\\.%1)*").arg(label));
}

enum class Kind {
    None,
    Word, // only the words given
    Number, // plain decimal within low..high
    Host, // host name, IPv4 or IPv6 address
    Ipv4,
    Algorithm, // cipher or digest names, ":" between several
    CipherList, // an OpenSSL cipher string
    Text, // printable ASCII
    Block, // only as an inline <tag> block
};

// One argument: accepted when it is one of the words ("a|b"), or of the kind.
struct Arg
{
    Kind kind;
    const char* words;
    int low;
    int high;
};

constexpr Arg word(const char* words)
{
    return {Kind::Word, words, 0, 0};
}
constexpr Arg number(int low, int high, const char* words = "")
{
    return {Kind::Number, words, low, high};
}
constexpr Arg of(Kind kind, const char* words = "")
{
    return {kind, words, 0, 0};
}

struct Directive
{
    const char* name;
    int minArgs;
    int maxArgs;
    // Argument i is checked by args[i], or by the last one given when there are more arguments.
    std::array<Arg, 4> args;
    bool (*valid)(const QStringList& args);
};

bool dhcpOptionValue(const QStringList& args)
{
    // The values end up in the resolver configuration the up script writes.
    if (args.at(0) == QLatin1String("DNS"))
        return isIpv4(args.at(1)) || isIpv6(args.at(1));
    if (args.at(0) == QLatin1String("DNS6"))
        return isIpv6(args.at(1));
    return isHostName(args.at(1));
}

constexpr const char* Protocols = "udp|tcp|tcp-client|udp4|udp6|tcp4-client|tcp6-client";
constexpr Arg Seconds = number(0, 86400);
constexpr Arg Bytes = number(0, 67108864);
constexpr std::array<Arg, 4> NoArgs = {};

// Everything a client of the service needs, and nothing else.
const Directive Directives[] = {
    {"client", 0, 0, NoArgs, nullptr},
    {"pull", 0, 0, NoArgs, nullptr},
    {"tls-client", 0, 0, NoArgs, nullptr},
    {"dev", 1, 1, {word("tun")}, nullptr},
    {"dev-type", 1, 1, {word("tun")}, nullptr},
    {"proto", 1, 1, {word(Protocols)}, nullptr},
    {"remote", 1, 3, {of(Kind::Host), number(1, 65535), word(Protocols)}, nullptr},
    {"remote-random", 0, 0, NoArgs, nullptr},
    {"resolv-retry", 1, 1, {number(0, 86400, "infinite")}, nullptr},
    {"nobind", 0, 0, NoArgs, nullptr},
    {"persist-key", 0, 0, NoArgs, nullptr},
    {"persist-tun", 0, 0, NoArgs, nullptr},
    {"remote-cert-tls", 1, 1, {word("server")}, nullptr},
    {"verify-x509-name", 1, 2, {of(Kind::Text), word("name|name-prefix|subject")}, nullptr},
    {"cipher", 1, 1, {of(Kind::Algorithm)}, nullptr},
    {"data-ciphers", 1, 1, {of(Kind::Algorithm)}, nullptr},
    {"data-ciphers-fallback", 1, 1, {of(Kind::Algorithm)}, nullptr},
    {"auth", 1, 1, {of(Kind::Algorithm)}, nullptr},
    {"auth-user-pass", 0, 0, NoArgs, nullptr}, // with a file name it would read that file
    {"auth-nocache", 0, 0, NoArgs, nullptr},
    {"auth-retry", 1, 1, {word("none|nointeract")}, nullptr},
    {"comp-lzo", 0, 1, {word("yes|no|adaptive")}, nullptr},
    {"verb", 1, 1, {number(0, 11)}, nullptr},
    {"mute", 1, 1, {number(0, 1000000)}, nullptr},
    {"tun-mtu", 1, 1, {number(576, 65535)}, nullptr},
    {"mssfix", 0, 1, {number(0, 65535)}, nullptr},
    {"reneg-sec", 1, 2, {Seconds}, nullptr},
    {"key-direction", 1, 1, {word("0|1")}, nullptr},
    {"redirect-gateway", 0, 8, {word("local|autolocal|def1|bypass-dhcp|bypass-dns|block-local|ipv6|!ipv4")}, nullptr},
    {"dhcp-option", 2, 2, {word("DNS|DNS6|DOMAIN|DOMAIN-SEARCH"), of(Kind::Host)}, dhcpOptionValue},
    {"route",
     1,
     4,
     {of(Kind::Host), of(Kind::Ipv4), of(Kind::Ipv4, "net_gateway|vpn_gateway"), number(0, 65535)},
     nullptr},
    {"route-nopull", 0, 0, NoArgs, nullptr},
    {"pull-filter", 2, 2, {word("accept|ignore|reject"), of(Kind::Text)}, nullptr},
    {"explicit-exit-notify", 0, 1, {number(0, 100)}, nullptr},
    {"keepalive", 2, 2, {Seconds}, nullptr},
    {"ping", 1, 1, {Seconds}, nullptr},
    {"ping-restart", 1, 1, {Seconds}, nullptr},
    {"connect-retry", 1, 2, {Seconds}, nullptr},
    {"connect-timeout", 1, 1, {Seconds}, nullptr},
    {"server-poll-timeout", 1, 1, {Seconds}, nullptr},
    {"hand-window", 1, 1, {Seconds}, nullptr},
    {"tls-version-min", 1, 2, {word("1.0|1.1|1.2|1.3"), word("or-highest")}, nullptr},
    {"tls-cipher", 1, 1, {of(Kind::CipherList)}, nullptr},
    {"sndbuf", 1, 1, {Bytes}, nullptr},
    {"socket-flags", 1, 1, {word("TCP_NODELAY")}, nullptr},
    {"rcvbuf", 1, 1, {Bytes}, nullptr},
    {"ca", 1, 1, {of(Kind::Block)}, nullptr},
    {"cert", 1, 1, {of(Kind::Block)}, nullptr},
    {"key", 1, 1, {of(Kind::Block)}, nullptr},
    {"tls-auth", 1, 1, {of(Kind::Block)}, nullptr},
    {"tls-crypt", 1, 1, {of(Kind::Block)}, nullptr},
    // The stealth configuration drops the host route OpenVPN adds for its local remote.
    {"route-up", 1, 1, {word("/bin/ip route del 127.0.0.1")}, nullptr},
};

const Directive* findDirective(const QString& name)
{
    for (const Directive& directive : Directives) {
        if (name == QLatin1String(directive.name))
            return &directive;
    }
    return nullptr;
}

bool accepts(const Arg& arg, const QString& text)
{
    if (QString::fromLatin1(arg.words).split(QLatin1Char('|'), Qt::SkipEmptyParts).contains(text))
        return true;
    switch (arg.kind) {
    case Kind::Number: {
        bool ok = false;
        const int value = text.toInt(&ok);
        return matches(text, QStringLiteral("[0-9]{1,9}")) && ok && value >= arg.low && value <= arg.high;
    }
    case Kind::Host:
        return isHostName(text) || isIpv6(text);
    case Kind::Ipv4:
        return isIpv4(text);
    case Kind::Algorithm:
        return matches(text, QStringLiteral("[A-Za-z0-9][A-Za-z0-9_.:+-]{0,199}"));
    case Kind::CipherList:
        return matches(text, QStringLiteral("[A-Za-z0-9_.:+!@=-]{1,200}"));
    case Kind::Text:
        return matches(text, QStringLiteral("[\\x20-\\x7e]{1,200}"));
    case Kind::None:
    case Kind::Word:
    case Kind::Block:
        break;
    }
    return false;
}

} // namespace

QStringList OpenVpnConfigCheck::tokenize(const QByteArray& line, QString* error)
{
    // OpenVPN's parse_line(), state for state; its space() counts the end of the string as a blank.
    const auto space = [](char c) {
        return c == '\0' || isBlank(c);
    };
    const auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return QStringList();
    };
    if (error)
        error->clear();
    enum { Initial, Unquoted, DoubleQuoted, SingleQuoted } state = Initial;
    QStringList words;
    QByteArray word;
    bool backslash = false;
    for (int i = 0; i <= line.size(); ++i) {
        const char in = i < line.size() ? line.at(i) : '\0';
        char out = '\0';
        if (!backslash && in == '\\' && state != SingleQuoted) {
            backslash = true;
        } else {
            bool done = false;
            switch (state) {
            case Initial:
                if (space(in))
                    break;
                if (in == '#' || in == ';') // even after a backslash
                    return words;
                if (!backslash && in == '"') {
                    state = DoubleQuoted;
                } else if (!backslash && in == '\'') {
                    state = SingleQuoted;
                } else {
                    out = in;
                    state = Unquoted;
                }
                break;
            case Unquoted:
                if (!backslash && space(in))
                    done = true;
                else
                    out = in;
                break;
            case DoubleQuoted:
                if (!backslash && in == '"')
                    done = true;
                else
                    out = in;
                break;
            case SingleQuoted:
                if (in == '\'')
                    done = true;
                else
                    out = in;
                break;
            }
            if (done) {
                words.append(QString::fromLatin1(word));
                word.clear();
                state = Initial;
            }
            if (backslash && out != '\0' && out != '\\' && out != '"' && !space(out))
                return fail(QStringLiteral("backslash before \"%1\"").arg(QLatin1Char(out)));
            backslash = false;
        }
        if (out != '\0')
            word.append(out);
        if (words.size() >= MaxWords || in == '\0')
            break;
    }
    if (state == DoubleQuoted)
        return fail(QStringLiteral("no closing quote"));
    if (state == SingleQuoted)
        return fail(QStringLiteral("no closing single quote"));
    if (state != Initial)
        return fail(QStringLiteral("backslash at the end of the file"));
    return words;
}

bool OpenVpnConfigCheck::allows(const QString& name, bool block)
{
    const Directive* directive = findDirective(name);
    return directive && (directive->args.at(0).kind == Kind::Block) == block;
}

bool OpenVpnConfigCheck::checkDirective(const QStringList& words, int lineNumber, bool block)
{
    const QString& name = words.first();
    const Directive* directive = findDirective(name);
    const bool blockOnly = directive && directive->args.at(0).kind == Kind::Block;
    if (!directive || (block && !blockOnly)) {
        m_error = QStringLiteral("line %1: directive \"%2\" is not allowed").arg(lineNumber).arg(name);
        return false;
    }
    if (blockOnly && !block) {
        m_error = QStringLiteral("line %1: directive \"%2\" is only allowed as a <%2> block").arg(lineNumber).arg(name);
        return false;
    }
    if (block) // certificates and keys: OpenVPN reads them as such and nothing else
        return true;

    const QStringList args = words.mid(1);
    if (args.size() < directive->minArgs || args.size() > directive->maxArgs) {
        m_error = QStringLiteral("line %1: wrong number of arguments for \"%2\"").arg(lineNumber).arg(name);
        return false;
    }
    int given = 0;
    while (given < int(directive->args.size()) && directive->args.at(given).kind != Kind::None)
        ++given;
    for (int i = 0; i < args.size(); ++i) {
        if (!accepts(directive->args.at(std::min(i, given - 1)), args.at(i))
            || (i == args.size() - 1 && directive->valid && !directive->valid(args))) {
            m_error = QStringLiteral("line %1: bad argument \"%2\" for \"%3\"").arg(lineNumber).arg(args.at(i), name);
            return false;
        }
    }
    return true;
}

bool OpenVpnConfigCheck::check(const QByteArray& config)
{
    m_error.clear();
    if (config.contains('\0')) {
        m_error = QStringLiteral("the file holds a zero byte");
        return false;
    }
    // The lines as fgets() hands them out, each with its line feed.
    QList<QByteArray> lines;
    for (int start = 0; start < config.size();) {
        const int feed = config.indexOf('\n', start);
        const int end = feed < 0 ? config.size() : feed + 1;
        lines.append(config.mid(start, end - start));
        if (end - start - (feed < 0 ? 0 : 1) > MaxLineLength) {
            m_error = QStringLiteral("line %1 is longer than %2 bytes").arg(lines.size()).arg(MaxLineLength);
            return false;
        }
        start = end;
    }

    bool isClient = false;
    for (int i = 0; i < lines.size(); ++i) {
        QByteArray line = lines.at(i);
        if (i == 0 && line.startsWith("\xEF\xBB\xBF"))
            line.remove(0, 3);
        QString error;
        QStringList words = tokenize(line, &error);
        if (!error.isEmpty()) {
            m_error = QStringLiteral("line %1: %2").arg(i + 1).arg(error);
            return false;
        }
        if (words.isEmpty())
            continue;
        if (words.first().size() >= 3 && words.first().startsWith(QLatin1String("--")))
            words.first().remove(0, 2);

        const QString& first = words.first();
        if (words.size() == 1 && first.startsWith(QLatin1Char('<')) && first.endsWith(QLatin1Char('>'))) {
            const QString tag = first.mid(1, first.size() - 2);
            const QByteArray closing = "</" + tag.toLatin1() + '>';
            int end = i + 1;
            for (; end < lines.size(); ++end) {
                const QByteArray& content = lines.at(end);
                int blanks = 0;
                while (blanks < content.size() && isBlank(content.at(blanks)))
                    ++blanks;
                if (content.mid(blanks).startsWith(closing))
                    break;
            }
            if (end == lines.size()) {
                m_error = QStringLiteral("line %1: <%2> is not closed").arg(i + 1).arg(tag);
                return false;
            }
            if (!checkDirective({tag}, i + 1, true))
                return false;
            i = end;
            continue;
        }
        if (!checkDirective(words, i + 1, false))
            return false;
        isClient = isClient || first == QLatin1String("client");
    }
    // Without it OpenVPN is a peer that waits for anyone on its port, as root.
    if (!isClient) {
        m_error = QStringLiteral("no \"client\" directive");
        return false;
    }
    return true;
}
