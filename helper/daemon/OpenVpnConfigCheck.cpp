#include "OpenVpnConfigCheck.h"

#include <QList>
#include <QSet>

namespace {

// OpenVPN reads a configuration in chunks of this size: a longer line would be split into two
// lines, the second one unseen by a line-based check, so such lines are refused.
constexpr int MaxLineLength = 255;

const QSet<QString>& forbiddenDirectives()
{
    static const QSet<QString> names {
        // run a program
        QStringLiteral("up"),
        QStringLiteral("down"),
        QStringLiteral("ipchange"),
        QStringLiteral("route-up"),
        QStringLiteral("route-pre-down"),
        QStringLiteral("tls-verify"),
        QStringLiteral("tls-crypt-v2-verify"),
        QStringLiteral("auth-user-pass-verify"),
        QStringLiteral("client-connect"),
        QStringLiteral("client-disconnect"),
        QStringLiteral("client-crresponse"),
        QStringLiteral("learn-address"),
        QStringLiteral("iproute"),
        QStringLiteral("dns-updown"),
        QStringLiteral("setenv"),
        QStringLiteral("setenv-safe"),
        QStringLiteral("script-security"),
        // load code
        QStringLiteral("plugin"),
        QStringLiteral("engine"),
        QStringLiteral("providers"),
        QStringLiteral("pkcs11-providers"),
        // read another configuration or prompt
        QStringLiteral("config"),
        QStringLiteral("askpass"),
        // open a control port or leave the daemon's control
        QStringLiteral("management"),
        QStringLiteral("daemon"),
        QStringLiteral("cd"),
        QStringLiteral("chroot"),
        QStringLiteral("dev-node"),
        // write a file it names
        QStringLiteral("log"),
        QStringLiteral("log-append"),
        QStringLiteral("status"),
        QStringLiteral("writepid"),
        QStringLiteral("replay-persist"),
        QStringLiteral("ifconfig-pool-persist"),
        QStringLiteral("tls-export-cert"),
        QStringLiteral("tmp-dir"),
    };
    return names;
}

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

} // namespace

QStringList OpenVpnConfigCheck::tokenize(const QByteArray& line)
{
    QStringList words;
    QByteArray word;
    enum { Between, Plain, DoubleQuoted, SingleQuoted } state = Between;
    bool escaped = false;
    for (int i = 0; i <= line.size(); ++i) {
        const char c = i < line.size() ? line.at(i) : '\0';
        if (c == '\0') {
            if (state != Between)
                words.append(QString::fromUtf8(word));
            break;
        }
        if (state == Between) {
            if (isSpace(c))
                continue;
            if (c == '#' || c == ';')
                break;
            word.clear();
            if (c == '"') {
                state = DoubleQuoted;
                continue;
            }
            if (c == '\'') {
                state = SingleQuoted;
                continue;
            }
            state = Plain;
        }
        if (state == SingleQuoted) {
            if (c == '\'') {
                words.append(QString::fromUtf8(word));
                state = Between;
            } else {
                word.append(c);
            }
            continue;
        }
        if (escaped) {
            word.append(c);
            escaped = false;
            continue;
        }
        if (c == '\\') {
            escaped = true;
            continue;
        }
        if ((state == DoubleQuoted && c == '"') || (state == Plain && isSpace(c))) {
            words.append(QString::fromUtf8(word));
            state = Between;
            continue;
        }
        word.append(c);
    }
    return words;
}

bool OpenVpnConfigCheck::checkDirective(const QStringList& words, int lineNumber)
{
    QString name = words.first();
    if (name.startsWith(QLatin1String("--")))
        name.remove(0, 2);
    name = name.toLower();

    // The stealth configuration drops the host route OpenVPN adds for its local remote.
    if (name == QLatin1String("route-up") && words.size() == 2
        && words.at(1) == QLatin1String("/bin/ip route del 127.0.0.1"))
        return true;

    bool refused = forbiddenDirectives().contains(name) || name.startsWith(QLatin1String("management"));
    // Without a file name the credentials come over the management port; with one they are read from a file.
    if (name == QLatin1String("auth-user-pass") && words.size() > 1)
        refused = true;
    if (refused)
        m_error = QStringLiteral("line %1: directive \"%2\" is not allowed").arg(lineNumber).arg(name);
    return !refused;
}

bool OpenVpnConfigCheck::check(const QByteArray& config)
{
    m_error.clear();
    if (config.contains('\0')) {
        m_error = QStringLiteral("the file holds a zero byte");
        return false;
    }
    const QList<QByteArray> lines = config.split('\n');
    for (int i = 0; i < lines.size(); ++i) {
        QByteArray line = lines.at(i);
        if (i == 0 && line.startsWith("\xEF\xBB\xBF"))
            line.remove(0, 3);
        if (line.size() > MaxLineLength) {
            m_error = QStringLiteral("line %1 is longer than %2 bytes").arg(i + 1).arg(MaxLineLength);
            return false;
        }
        // Inline blocks: the opening tag names a directive too (<connection> holds directives,
        // <plugin> or <up> would be one). Their content lines are checked like any other line,
        // which costs nothing for certificates and keys.
        const QByteArray trimmed = line.trimmed();
        if (trimmed.startsWith('<') && trimmed.endsWith('>')) {
            QByteArray tag = trimmed.mid(1, trimmed.size() - 2);
            if (tag.startsWith('/'))
                continue;
            if (!checkDirective(QStringList {QString::fromUtf8(tag)}, i + 1))
                return false;
            continue;
        }
        const QStringList words = tokenize(line);
        if (!words.isEmpty() && !checkDirective(words, i + 1))
            return false;
    }
    return true;
}
