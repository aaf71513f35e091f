#include "OpenVpnArguments.h"

#include <QStringList>
#include <QVector>

namespace {

struct Word
{
    QString text;
    bool quoted = false;
};

// Splits on runs of blanks; a double-quoted word may hold blanks and ends at the next quote,
// which must be followed by a blank or the end. Returns false on an unbalanced quote.
bool splitWords(const QString& text, QVector<Word>& words)
{
    int i = 0;
    const int n = text.size();
    while (i < n) {
        if (text.at(i) == QLatin1Char(' ')) {
            ++i;
            continue;
        }
        Word w;
        if (text.at(i) == QLatin1Char('"')) {
            const int close = text.indexOf(QLatin1Char('"'), i + 1);
            if (close < 0 || (close + 1 < n && text.at(close + 1) != QLatin1Char(' ')))
                return false;
            w.text = text.mid(i + 1, close - i - 1);
            w.quoted = true;
            i = close + 1;
        } else {
            const int blank = text.indexOf(QLatin1Char(' '), i);
            const int end = blank < 0 ? n : blank;
            w.text = text.mid(i, end - i);
            if (w.text.contains(QLatin1Char('"')))
                return false;
            i = end;
        }
        words.append(w);
    }
    return true;
}

bool isSafePath(const QString& path)
{
    if (!path.startsWith(QLatin1Char('/')) || path.size() > 4096)
        return false;
    for (const QChar c : path) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7F || c == QLatin1Char('"') || c == QLatin1Char('\\'))
            return false;
    }
    const QStringList parts = path.split(QLatin1Char('/'));
    return !parts.contains(QStringLiteral("..")) && !parts.contains(QStringLiteral("."));
}

} // namespace

bool OpenVpnArguments::fail(const QString& why)
{
    m_error = why;
    m_configPath.clear();
    m_managementPort = 0;
    return false;
}

bool OpenVpnArguments::parse(const QString& text)
{
    m_error.clear();
    QVector<Word> w;
    if (!splitWords(text, w))
        return fail(QStringLiteral("unbalanced or misplaced quote"));
    if (w.size() != 12)
        return fail(QStringLiteral("expected 12 words, got %1").arg(w.size()));

    const QString script = QLatin1String(ResolverScript);
    const QStringList expected {QStringLiteral("--config"),
                                QString(),
                                QStringLiteral("--management"),
                                QStringLiteral("127.0.0.1"),
                                QString(),
                                QStringLiteral("--management-query-passwords"),
                                QStringLiteral("--script-security"),
                                QStringLiteral("2"),
                                QStringLiteral("--up"),
                                script,
                                QStringLiteral("--down"),
                                script};
    for (int i = 0; i < w.size(); ++i) {
        if (i == 1 || i == 4)
            continue;
        if (w.at(i).quoted || w.at(i).text != expected.at(i))
            return fail(
                QStringLiteral("word %1 is \"%2\", expected \"%3\"").arg(i + 1).arg(w.at(i).text, expected.at(i)));
    }

    if (!w.at(1).quoted)
        return fail(QStringLiteral("the configuration path is not quoted"));
    if (!isSafePath(w.at(1).text))
        return fail(QStringLiteral("unsafe configuration path"));

    const QString port = w.at(4).text;
    bool ok = false;
    const uint value = port.toUInt(&ok);
    if (w.at(4).quoted || !ok || value < 1 || value > 65535 || port.startsWith(QLatin1Char('0'))
        || port.startsWith(QLatin1Char('+')))
        return fail(QStringLiteral("bad management port"));

    m_configPath = w.at(1).text;
    m_managementPort = quint16(value);
    return true;
}
