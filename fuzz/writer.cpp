// The client's configuration writer against the daemon's check: whatever server, ports,
// certificate and key of the shapes the service sends, and a template made of the lines it
// sends, the file the writer produces is one the daemon accepts.
#include "FuzzCheck.h"
#include "MakeOVPNFile.h"
#include "OpenVpnConfigCheck.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <QFile>

namespace {

const char* const TemplateLines[] = {
    "dev tun",
    "nobind",
    "persist-key",
    "persist-tun",
    "remote-cert-tls server",
    "cipher AES-256-GCM",
    "data-ciphers AES-256-GCM:AES-128-GCM",
    "auth SHA256",
    "verb 3",
    "resolv-retry infinite",
    "#udp explicit-exit-notify 1",
    "#tcp socket-flags TCP_NODELAY",
    "#stealth ping-restart 30",
    "#udp #tcp keepalive 10 60",
    "# a comment #udp inside",
};

QByteArray pem(FuzzedDataProvider& input, const char* label, const char* lineEnd)
{
    const QByteArray body = QByteArray::fromStdString(input.ConsumeRandomLengthString(4096)).toBase64();
    QByteArray text = QByteArray("-----BEGIN ") + label + "-----" + lineEnd;
    for (int at = 0; at < body.size(); at += 64)
        text += body.mid(at, 64) + lineEnd;
    return text + "-----END " + label + "-----" + lineEnd;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    const char* lineEnd = input.ConsumeBool() ? "\r\n" : "\n";
    const int mode = input.ConsumeIntegralInRange(0, 2); // UDP, TCP, stealth

    ConfigServer server;
    server.protocol = mode == 0 ? QStringLiteral("udp") : QStringLiteral("tcp");
    server.ip = QStringLiteral("%1.%2.%3.%4")
                    .arg(input.ConsumeIntegral<uint8_t>())
                    .arg(input.ConsumeIntegral<uint8_t>())
                    .arg(input.ConsumeIntegral<uint8_t>())
                    .arg(input.ConsumeIntegral<uint8_t>());
    for (int n = input.ConsumeIntegralInRange(0, 5); n > 0; --n)
        server.ports << QString::number(input.ConsumeIntegralInRange(1, 65535));
    server.stunnelPort = input.ConsumeIntegralInRange(1, 65535);
    server.config = QByteArray("client") + lineEnd;
    for (int n = input.ConsumeIntegralInRange(0, 20); n > 0; --n) {
        const auto line = input.ConsumeIntegralInRange<size_t>(0, std::size(TemplateLines) - 1);
        server.config += QByteArray(TemplateLines[line]) + lineEnd;
    }
    server.cert = pem(input, "CERTIFICATE", lineEnd);
    server.key = pem(input, "PRIVATE KEY", lineEnd);

    MakeOVPNFile file;
    const bool written = mode == 2 ? file.generateStunnel(server) : file.generate(server);
    FUZZ_CHECK(written, QStringLiteral("the writer failed"));
    QFile result(file.configFileName);
    FUZZ_CHECK(result.open(QIODevice::ReadOnly), file.configFileName);
    const QByteArray config = result.readAll();
    OpenVpnConfigCheck check;
    FUZZ_CHECK(check.check(config), check.error() + QLatin1Char('\n') + QString::fromUtf8(config));
    return 0;
}
