#pragma once

#include <QSslCertificate>
#include <QSslKey>
#include <QString>

// Server certificates for the fake service from a throw-away certificate authority. openssl makes the authority and
// each kind of certificate once per process, in a temporary directory that lives as long as the process. Clients
// trust the authority through TAVRIN_CA_FILE = authorityFile().
namespace FakeCertificates {

enum class Kind {
    Trusted, // for IP 127.0.0.1 and DNS localhost, signed by the authority
    UnknownAuthority, // the same names, signed by an authority no one trusts
    OtherHost, // signed by the authority, for another host name only
    Expired, // signed by the authority for 127.0.0.1 and localhost, valid only in January 2020
};

// The authority's certificate as a PEM file; empty, with a reason, when it could not be made.
QString authorityFile(QString* error = nullptr);

// False with a reason when openssl failed.
bool make(Kind kind, QSslCertificate* certificate, QSslKey* key, QString* error);

} // namespace FakeCertificates
