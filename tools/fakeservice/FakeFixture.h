#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVector>

// One VPN login of the fake account, with the OpenVPN credentials the service hands out for it.
struct FakeLogin
{
    QString user;
    QString pass;
    qint64 exp = 0; // seconds since 1970-01-01 UTC
    QByteArray cert;
    QByteArray key;
};

// One `vpn` element; every attribute is sent as written here (Base64-encoded on the wire).
struct FakeServer
{
    QString name;
    QString ip;
    QString tcp;
    QString udp;
    QString ssl;
    QString flag;
    QString user;
    QString dns;
    QString group;
    QString sni;
};

// Everything the fake service answers with. Read from a JSON file or taken from demo().
struct FakeFixture
{
    QString login;
    QString password;
    bool versionAccepted = true;
    QString accountType; // "lite" marks a lite account
    QString error; // a service error ("nosub", ...) sent instead of the account; empty for none
    QByteArray config;
    QVector<FakeLogin> logins;
    QVector<FakeServer> servers;
    QString upgradeVersion; // offered to os=linux-debian when both are set
    QString upgradeLink; // a path starting with "/" is made absolute on the fake's own address
    QString timezone;
    QString buyLink;
    QMap<QString, int> doublePings;
    int packageSize = 64 * 1024; // bytes served as the update package
    QString packageFile; // served as the update package instead, when set (the demo's signed one)

    // A demo account "demo"/"demo" with two VPN logins and standard and double-hop locations in several countries.
    static FakeFixture demo();

    static bool fromJson(const QByteArray& json, FakeFixture* fixture, QString* error);
    QByteArray toJson() const;
};
