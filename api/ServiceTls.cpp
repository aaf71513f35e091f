#include "ServiceTls.h"

#include <QDebug>
#include <QFile>
#include <QSslSocket>
#include <QStringList>

namespace ServiceTls {

QSslConfiguration configuration()
{
    static const QSslConfiguration tls = [] {
        QSslConfiguration made = QSslConfiguration::defaultConfiguration();
        made.setPeerVerifyMode(QSslSocket::VerifyPeer);
        made.setProtocol(QSsl::SecureProtocols);
        // Left as Qt sets it by default, the system's store is searched by the TLS library for the one authority a
        // handshake needs; reading the whole store instead costs a tenth of a second of processor time and a
        // megabyte of memory. The tests, the demo and the benchmarks talk to the fake service only, whose
        // authority alone they trust.
        const QString own = qEnvironmentVariable("TAVRIN_CA_FILE");
        if (!own.isEmpty())
            made.setCaCertificates(readAuthorities(own));
        return made;
    }();
    return tls;
}

QList<QSslCertificate> readAuthorities(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning().noquote()
            << QStringLiteral("Certificate authorities not read from %1: %2").arg(path, file.errorString());
        return {};
    }
    const QList<QSslCertificate> certificates = QSslCertificate::fromData(file.readAll(), QSsl::Pem);
    if (certificates.isEmpty())
        qWarning().noquote() << "No PEM certificate in" << path;
    else
        qDebug().noquote() << "Trusting" << certificates.size() << "certificate authorities from" << path;
    return certificates;
}

QString describe(const QList<QSslError>& errors)
{
    QStringList texts;
    for (const QSslError& error : errors) {
        const QSslCertificate certificate = error.certificate();
        QString text = error.errorString();
        if (!certificate.isNull())
            text += QStringLiteral(" (%1)").arg(certificate.subjectDisplayName());
        if (!texts.contains(text))
            texts << text;
    }
    return texts.join(QStringLiteral("; "));
}

} // namespace ServiceTls
