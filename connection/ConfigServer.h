#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// What the connect page hands to the configuration writer for one connection.
struct ConfigServer
{
    // Server ports to try in order; not read in stealth mode.
    QStringList ports;
    // "udp" or "tcp"; not read in stealth mode.
    QString protocol;
    QString ip;
    // PEM texts and the configuration template, byte for byte as the service sent them.
    QByteArray cert;
    QByteArray key;
    QByteArray config;
    // Local port of the stunnel client (stealth mode only).
    qint32 stunnelPort = 0;
};
