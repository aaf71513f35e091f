// The offline cache: server lines (the first byte 0) and the certificate and key maps (1).
// A record read from a line is written and read back unchanged. Records with a '%' in a field
// are left out: the text form fills placeholders one by one, so such a field may take a
// later one's value, as the line format has always done. An empty port list is written as an
// empty field and read back as one empty port, which is the same list here.
#include "FuzzCheck.h"
#include "NetworkManager.h"
#include "ServerLines.h"

#include <QStringList>

namespace {

QStringList fields(const ServerInfo& s)
{
    return {s.name,
            s.flag,
            s.title,
            s.ip,
            QString::number(s.favorite),
            s.user,
            s.password,
            s.tcpPorts.join(QLatin1Char('\n')),
            s.udpPorts.join(QLatin1Char('\n')),
            QString::number(int(s.protocol)),
            QString::number(s.sslPort),
            QString::number(int(s.type)),
            s.sni};
}

void serverLine(const QString& line)
{
    const ServerInfo record = ServerLines().server(line);
    if (fields(record).join(QString()).contains(QLatin1Char('%')))
        return;
    const QString written = ServerLines::lineOf(record);
    FUZZ_CHECK(fields(ServerLines().server(written)) == fields(record),
               line + QStringLiteral(" written as ") + written);
}

void certificateMap(const QByteArray& array)
{
    const QMap<QString, QByteArray> map = NetworkManager::cacheArrayToMap(array);
    FUZZ_CHECK(NetworkManager::cacheArrayToMap(NetworkManager::cacheMapToArray(map)) == map,
               QString::number(map.size()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1)
        return 0;
    const QByteArray rest = bytes(data + 1, size - 1);
    if (data[0] == 0)
        serverLine(QString::fromUtf8(rest.constData(), rest.size()));
    else if (data[0] == 1)
        certificateMap(rest);
    return 0;
}
