#include "FakeCertificates.h"

#include <QFile>
#include <QHash>
#include <QPair>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

namespace {

const QString trustedAuthority = QStringLiteral("tavrin-test-ca");
const QString unknownAuthority = QStringLiteral("unknown-ca");
const QString localNames = QStringLiteral("IP:127.0.0.1, DNS:localhost, DNS:api.e2e.test");

struct Recipe
{
    QString name;
    QString authority;
    QString commonName;
    QString altNames;
    QStringList validity;
};

Recipe recipe(FakeCertificates::Kind kind)
{
    const QStringList days = {QStringLiteral("-days"), QStringLiteral("30")};
    const Recipe trusted = {QStringLiteral("trusted"), trustedAuthority, QStringLiteral("localhost"), localNames, days};
    switch (kind) {
    case FakeCertificates::Kind::Trusted:
        return trusted;
    case FakeCertificates::Kind::UnknownAuthority:
        return {QStringLiteral("unknown-authority"), unknownAuthority, QStringLiteral("localhost"), localNames, days};
    case FakeCertificates::Kind::OtherHost:
        return {QStringLiteral("other-host"),
                trustedAuthority,
                QStringLiteral("other.invalid"),
                QStringLiteral("DNS:other.invalid"),
                days};
    case FakeCertificates::Kind::Expired:
        return {QStringLiteral("expired"),
                trustedAuthority,
                QStringLiteral("localhost"),
                localNames,
                {QStringLiteral("-startdate"),
                 QStringLiteral("20200101000000Z"),
                 QStringLiteral("-enddate"),
                 QStringLiteral("20200201000000Z")}};
    }
    return trusted;
}

QTemporaryDir& workshop()
{
    static QTemporaryDir dir;
    return dir;
}

QString inWorkshop(const QString& name)
{
    return workshop().filePath(name);
}

bool openssl(const QStringList& arguments, QString* error)
{
    QProcess process;
    process.start(QStringLiteral("openssl"), arguments);
    if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        *error = QStringLiteral("openssl %1 failed: %2")
                     .arg(arguments.first(), QString::fromLocal8Bit(process.readAllStandardError()));
        return false;
    }
    return true;
}

bool writeFile(const QString& path, const QByteArray& text, QString* error)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size())
        return true;
    *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
    return false;
}

QStringList newKey(const QString& keyPath)
{
    return {QStringLiteral("-newkey"),
            QStringLiteral("ec"),
            QStringLiteral("-pkeyopt"),
            QStringLiteral("ec_paramgen_curve:prime256v1"),
            QStringLiteral("-nodes"),
            QStringLiteral("-keyout"),
            keyPath};
}

// A self-signed authority NAME.crt / NAME.key, and the files `openssl ca` signs with, made once.
bool makeAuthority(const QString& name, QString* error)
{
    if (!workshop().isValid()) {
        *error = QStringLiteral("no temporary directory for the certificates");
        return false;
    }
    const QString certificate = inWorkshop(name + QStringLiteral(".crt"));
    if (QFile::exists(certificate))
        return true;
    if (!QFile::exists(inWorkshop(QStringLiteral("ca.cnf")))) {
        const QString config = QStringLiteral("[ca]\ndefault_ca = fake\n[fake]\ndatabase = %1\nnew_certs_dir = %2\n"
                                              "serial = %3\ndefault_md = sha256\npolicy = anything\n"
                                              "unique_subject = no\ncopy_extensions = none\n"
                                              "[anything]\ncommonName = supplied\n")
                                   .arg(inWorkshop(QStringLiteral("index.txt")),
                                        workshop().path(),
                                        inWorkshop(QStringLiteral("serial")));
        if (!writeFile(inWorkshop(QStringLiteral("index.txt")), QByteArray(), error)
            || !writeFile(inWorkshop(QStringLiteral("serial")), "1000\n", error)
            || !writeFile(inWorkshop(QStringLiteral("ca.cnf")), config.toUtf8(), error))
            return false;
    }
    return openssl(QStringList {QStringLiteral("req"), QStringLiteral("-x509")}
                       + newKey(inWorkshop(name + QStringLiteral(".key")))
                       + QStringList {QStringLiteral("-subj"),
                                      QStringLiteral("/CN=") + name,
                                      QStringLiteral("-days"),
                                      QStringLiteral("30"),
                                      QStringLiteral("-out"),
                                      certificate},
                   error);
}

bool makeLeaf(const Recipe& r, QString* error)
{
    const QString base = inWorkshop(r.name);
    const QString extensions = QStringLiteral("basicConstraints = CA:FALSE\nkeyUsage = digitalSignature\n"
                                              "extendedKeyUsage = serverAuth\nsubjectAltName = %1\n")
                                   .arg(r.altNames);
    return makeAuthority(r.authority, error) && writeFile(base + QStringLiteral(".ext"), extensions.toUtf8(), error)
        && openssl(QStringList {QStringLiteral("req"), QStringLiteral("-new")} + newKey(base + QStringLiteral(".key"))
                       + QStringList {QStringLiteral("-subj"),
                                      QStringLiteral("/CN=") + r.commonName,
                                      QStringLiteral("-out"),
                                      base + QStringLiteral(".csr")},
                   error)
        && openssl(QStringList {QStringLiteral("ca"),
                                QStringLiteral("-batch"),
                                QStringLiteral("-notext"),
                                QStringLiteral("-config"),
                                inWorkshop(QStringLiteral("ca.cnf")),
                                QStringLiteral("-cert"),
                                inWorkshop(r.authority + QStringLiteral(".crt")),
                                QStringLiteral("-keyfile"),
                                inWorkshop(r.authority + QStringLiteral(".key")),
                                QStringLiteral("-in"),
                                base + QStringLiteral(".csr"),
                                QStringLiteral("-extfile"),
                                base + QStringLiteral(".ext"),
                                QStringLiteral("-out"),
                                base + QStringLiteral(".crt")}
                       + r.validity,
                   error);
}

} // namespace

namespace FakeCertificates {

QString authorityFile(QString* error)
{
    QString reason;
    if (!makeAuthority(trustedAuthority, &reason)) {
        if (error)
            *error = reason;
        return QString();
    }
    return inWorkshop(trustedAuthority + QStringLiteral(".crt"));
}

bool make(Kind kind, QSslCertificate* certificate, QSslKey* key, QString* error)
{
    static QHash<int, QPair<QSslCertificate, QSslKey>> made;
    auto found = made.constFind(int(kind));
    if (found == made.constEnd()) {
        const Recipe r = recipe(kind);
        if (!makeLeaf(r, error))
            return false;
        QFile certFile(inWorkshop(r.name + QStringLiteral(".crt")));
        QFile keyFile(inWorkshop(r.name + QStringLiteral(".key")));
        if (!certFile.open(QIODevice::ReadOnly) || !keyFile.open(QIODevice::ReadOnly)) {
            *error = QStringLiteral("cannot read the certificate openssl made");
            return false;
        }
        const QSslCertificate loadedCertificate(certFile.readAll(), QSsl::Pem);
        const QSslKey loadedKey(keyFile.readAll(), QSsl::Ec, QSsl::Pem);
        if (loadedCertificate.isNull() || loadedKey.isNull()) {
            *error = QStringLiteral("cannot load the certificate openssl made");
            return false;
        }
        found = made.insert(int(kind), qMakePair(loadedCertificate, loadedKey));
    }
    *certificate = found->first;
    *key = found->second;
    return true;
}

} // namespace FakeCertificates
