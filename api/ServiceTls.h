#pragma once

#include <QList>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslError>
#include <QString>

// How every connection to the service and its downloads is secured. The peer must show a certificate for the host
// that was asked for, issued by an authority of the system's store (ca-certificates) or, where TAVRIN_CA_FILE names
// a PEM file, by one of that file's authorities instead; otherwise the handshake fails and nothing is sent.
namespace ServiceTls {

// The TLS settings of a request. TAVRIN_CA_FILE is read at the first call, once per process; the program makes that
// call at start.
QSslConfiguration configuration();

// The certificates of a PEM file; a file that is missing, unreadable or holds none gives a warning and no certificate.
QList<QSslCertificate> readAuthorities(const QString& path);

// The handshake's errors in one line, for the log and the request's error text.
QString describe(const QList<QSslError>& errors);

} // namespace ServiceTls
