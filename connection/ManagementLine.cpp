#include "ManagementLine.h"

#include <QStringList>

namespace {

bool containsText(const QString& line, const char* text)
{
    return line.contains(QLatin1String(text), Qt::CaseInsensitive);
}

} // namespace

ManagementLine ManagementLine::read(const QByteArray& rawLine)
{
    ManagementLine result;
    const QString line = QString::fromUtf8(rawLine);

    // OpenVPN confirms the username with "username entered, but not yet verified" and then waits
    // for the password.
    if (containsText(line, "PASSWORD:Need 'Auth' username/password")) {
        result.kind = NeedUsername;
    } else if (containsText(line, "'Auth' username entered, but not yet verified")) {
        result.kind = NeedPassword;
    } else if (line.contains(QLatin1String("AUTH: Received control message: AUTH_FAILED"))) {
        result.kind = AuthFailed;
    } else if (containsText(line, "There are no TAP-Windows adapters on this system")) {
        result.kind = NoTapAdapter;
    } else if (containsText(line, "Proxy requires authentication")) {
        result.kind = ProxyNeedsAuth;
    } else if (containsText(line, ">BYTECOUNT:")) {
        const QStringList parts = line.split(QLatin1Char(':'));
        const QStringList counts = parts.size() < 2 ? QStringList() : parts.at(1).split(QLatin1Char(','));
        if (counts.size() == 2) {
            result.kind = ByteCount;
            result.bytesIn = counts.at(0).trimmed().toULongLong();
            result.bytesOut = counts.at(1).trimmed().toULongLong();
        }
    } else if (containsText(line, ">STATE:")) {
        result.kind = State;
        const QStringList fields = line.split(QLatin1Char(','));
        result.state = fields.size() > 1 ? fields.at(1) : QString();
        if (containsText(line, "CONNECTED,SUCCESS"))
            result.change = Connected;
        else if (containsText(line, "CONNECTED,ERROR"))
            result.change = ConnectFailed;
        else if (containsText(line, "RECONNECTING"))
            result.change = Reconnecting;
    } else if (containsText(line, ">LOG:")) {
        result.kind = Log;
        result.text = line;
        result.blockedWrite = containsText(line, "write UDPv4: No buffer space available (WSAENOBUFS) (code=10055)")
            || containsText(line, "write UDPv4: No Route to Host (WSAEHOSTUNREACH) (code=10065)");
    }
    return result;
}
