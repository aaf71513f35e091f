#include "MakeOVPNFile.h"

#include "TempLeftovers.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>

namespace {

// The template is text up to its first zero byte.
QString templateText(const QByteArray& config)
{
    return QString::fromLocal8Bit(config.constData(), int(qstrnlen(config.constData(), uint(config.size()))));
}

} // namespace

MakeOVPNFile::MakeOVPNFile() = default;

void MakeOVPNFile::removeLeftovers()
{
    forEachTempLeftover(QLatin1Char('.'), false, [](const QString& path) {
        qDebug() << "Removing a configuration left by an earlier run:" << QFileInfo(path).fileName();
        QFile::remove(path);
    });
}

bool MakeOVPNFile::generate(const ConfigServer& server)
{
    generated = false;
    if (openTruncated()) {
        for (const QString& port : server.ports)
            write(QStringLiteral("remote %1 %2 %3\r\n").arg(server.ip, port, server.protocol).toLocal8Bit());
        writeTemplate(server.config, {server.protocol});
        writeCredentials(server);
        write(dnsEnvConfig(server.ip));
    }
    return finish();
}

bool MakeOVPNFile::generateStunnel(const ConfigServer& server)
{
    generated = false;
    if (openTruncated()) {
        write("proto tcp");
        write(QStringLiteral("\r\nremote 127.0.0.1 %1\r\n").arg(server.stunnelPort).toLocal8Bit());
        writeTemplate(server.config, {QStringLiteral("tcp"), QStringLiteral("stealth")});
        writeCredentials(server);
        // The stunnel client's own connection to the server must stay outside the tunnel.
        write(QStringLiteral("\r\nroute %1 255.255.255.255 net_gateway").arg(server.ip).toLocal8Bit());
        // OpenVPN adds a host route for its remote 127.0.0.1; drop it once the routes are up.
        write("\r\nroute-up \"/bin/ip route del 127.0.0.1\"");
        write(dnsEnvConfig(server.ip));
    }
    return finish();
}

QByteArray MakeOVPNFile::dnsEnvConfig(QString ip)
{
    Q_UNUSED(ip)
    return {};
}

void MakeOVPNFile::discard()
{
    if (!fileName().isEmpty()) {
        remove();
        setFileName(QString());
    }
    configFileName.clear();
    generated = false;
}

bool MakeOVPNFile::openTruncated()
{
    if (!open())
        return false;
    return resize(0) && seek(0);
}

void MakeOVPNFile::writeTemplate(const QByteArray& config, const QStringList& markers)
{
    // Directives of a protocol are comment lines "#<protocol> "; a marker on the first line has
    // no line feed before it and stays a comment.
    QString text = templateText(config);
    for (const QString& marker : markers)
        text.replace(QStringLiteral("\n#%1 ").arg(marker), QStringLiteral("\n"));
    write(text.toLocal8Bit());
}

void MakeOVPNFile::writeCredentials(const ConfigServer& server)
{
    write("\r\n<cert>\r\n");
    write(server.cert);
    write("\r\n</cert>\r\n");
    write("\r\n<key>\r\n");
    write(server.key);
    write("\r\n</key>\r\n");
}

bool MakeOVPNFile::finish()
{
    if (isOpen()) {
        close();
        generated = true;
    }
    configFileName = fileName();
    return generated;
}
