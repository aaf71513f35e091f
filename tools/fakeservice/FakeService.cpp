#include "FakeService.h"

#include <QDebug>
#include <QFile>
#include <QPointer>
#include <QSslSocket>
#include <QTimer>
#include <QUrlQuery>

#include <memory>

#include "FakeAnswers.h"

namespace {
const int maxRequestHead = 64 * 1024;

QByteArray reason(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 400:
        return "Bad Request";
    case 404:
        return "Not Found";
    default:
        return "Internal Server Error";
    }
}
} // namespace

FakeService::FakeService(QObject* parent)
    : QTcpServer(parent)
    , m_fixture(FakeFixture::demo())
{ }

FakeService::~FakeService() = default;

bool FakeService::start(quint16 port, QString* error, const QHostAddress& address)
{
    // Made now rather than at the first connection, so that a missing openssl shows here.
    QSslCertificate certificate;
    QSslKey key;
    QString reasonText;
    if (!m_plain && !FakeCertificates::make(m_certificateKind, &certificate, &key, &reasonText)) {
        if (error)
            *error = reasonText;
        return false;
    }
    if (!listen(address, port)) {
        if (error)
            *error = errorString();
        return false;
    }
    return true;
}

QString FakeService::baseUrl() const
{
    return QStringLiteral("%1://%2:%3").arg(QLatin1String(m_plain ? "http" : "https"), m_hostName).arg(serverPort());
}

void FakeService::failNext(int count, Fault fault)
{
    m_nextFaultCount = count;
    m_nextFault = fault;
}

void FakeService::reset()
{
    m_fault = Fault::None;
    m_nextFault = Fault::None;
    m_nextFaultCount = 0;
    m_delayMs = 0;
    m_connectBody.clear();
    m_unsized = false;
    m_bodyRate = 0;
    m_certificateKind = FakeCertificates::Kind::Trusted;
    m_requests.clear();
}

void FakeService::incomingConnection(qintptr descriptor)
{
    auto* socket = new QSslSocket(this);
    if (!socket->setSocketDescriptor(descriptor)) {
        delete socket;
        return;
    }
    auto buffer = std::make_shared<QByteArray>();
    connect(socket, &QSslSocket::disconnected, socket, &QObject::deleteLater);
    connect(socket, &QSslSocket::readyRead, this, [this, socket, buffer]() {
        if (socket->property("answered").toBool()) {
            socket->readAll();
            return;
        }
        buffer->append(socket->readAll());
        const int end = buffer->indexOf("\r\n\r\n");
        if (end < 0) {
            if (buffer->size() > maxRequestHead)
                socket->abort();
            return;
        }
        socket->setProperty("answered", true);
        const QList<QByteArray> requestLine = buffer->left(buffer->indexOf("\r\n")).split(' ');
        const QUrl url = QUrl::fromEncoded(requestLine.value(1));
        m_requests.append(url);
        emit requestReceived(url);

        Fault fault = m_fault;
        if (m_nextFaultCount > 0) {
            --m_nextFaultCount;
            fault = m_nextFault;
        }
        switch (fault) {
        case Fault::Hang:
            return;
        case Fault::Close:
            socket->abort();
            return;
        case Fault::HttpError:
            send(socket, 500, QByteArrayLiteral("fault asked for"), QByteArrayLiteral("text/plain"), true);
            return;
        case Fault::NotXml:
            send(socket, 200, QByteArrayLiteral("{\"this\": \"is not XML\"}"), QByteArrayLiteral("text/plain"), true);
            return;
        case Fault::Empty:
            send(socket, 200, QByteArray(), QByteArrayLiteral("text/xml"), true);
            return;
        case Fault::None:
            break;
        }
        if (m_delayMs > 0) {
            QTimer::singleShot(m_delayMs, socket, [this, socket, url]() { answer(socket, url); });
            return;
        }
        answer(socket, url);
    });
    if (m_plain)
        return;
    QSslCertificate certificate;
    QSslKey key;
    QString error;
    if (!FakeCertificates::make(m_certificateKind, &certificate, &key, &error)) {
        qWarning().noquote() << "FakeService:" << error;
        socket->abort();
        return;
    }
    socket->setLocalCertificate(certificate);
    socket->setPrivateKey(key);
    // Clients show no certificate.
    socket->setPeerVerifyMode(QSslSocket::VerifyNone);
    socket->startServerEncryption();
}

void FakeService::answer(QTcpSocket* socket, const QUrl& url)
{
    int status = 200;
    QByteArray contentType = QByteArrayLiteral("text/xml");
    bool sized = true;
    const QByteArray body = route(url, &status, &contentType, &sized);
    send(socket, status, body, contentType, sized);
}

QByteArray FakeService::route(const QUrl& url, int* status, QByteArray* contentType, bool* sized)
{
    const QString path = url.path();
    const QUrlQuery query(url);
    if (path == QLatin1String("/connect")) {
        if (!m_connectBody.isEmpty())
            return m_connectBody;
        const QString act = query.queryItemValue(QStringLiteral("act"), QUrl::FullyDecoded);
        if (act == QLatin1String("wizardsetup")) {
            const bool credentialsOk
                = query.queryItemValue(QStringLiteral("login"), QUrl::FullyDecoded) == m_fixture.login
                && query.queryItemValue(QStringLiteral("pass"), QUrl::FullyDecoded) == m_fixture.password;
            const bool withUpgrade = query.queryItemValue(QStringLiteral("os")) == QLatin1String("linux-debian");
            return FakeAnswers::account(m_fixture, credentialsOk, withUpgrade, baseUrl());
        }
        if (act == QLatin1String("time"))
            return FakeAnswers::timezone(m_fixture);
        if (act == QLatin1String("buy"))
            return FakeAnswers::buyLink(m_fixture);
        *status = 400;
        return QByteArrayLiteral("unknown act");
    }
    if (path == QLatin1String("/upd/double.xml"))
        return FakeAnswers::doubleList(m_fixture);
    if (path == QLatin1String("/download/update.deb")) {
        *contentType = QByteArrayLiteral("application/vnd.debian.binary-package");
        *sized = !m_unsized;
        if (!m_fixture.packageFile.isEmpty()) {
            QFile package(m_fixture.packageFile);
            return package.open(QIODevice::ReadOnly) ? package.readAll() : QByteArray();
        }
        return FakeAnswers::package(m_fixture.packageSize);
    }
    if (path == QLatin1String("/download/config.ovpn")) {
        *contentType = QByteArrayLiteral("text/plain");
        *sized = !m_unsized;
        return m_fixture.config;
    }
    if (path == QLatin1String("/")) {
        *contentType = QByteArrayLiteral("text/html");
        return QByteArrayLiteral("<html><body>Velmora (fake)</body></html>\n");
    }
    *status = 404;
    *contentType = QByteArrayLiteral("text/plain");
    return QByteArrayLiteral("not found");
}

void FakeService::send(
    QTcpSocket* socket, int status, const QByteArray& body, const QByteArray& contentType, bool sized)
{
    QByteArray head = "HTTP/1.1 " + QByteArray::number(status) + ' ' + reason(status) + "\r\n";
    head += "Content-Type: " + contentType + "\r\n";
    if (sized)
        head += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    head += "Connection: close\r\n\r\n";
    socket->write(head);
    if (m_bodyRate <= 0) {
        socket->write(body);
        socket->disconnectFromHost();
        return;
    }
    const int slice = std::max(1, m_bodyRate / 100);
    auto* pace = new QTimer(socket);
    connect(pace, &QTimer::timeout, socket, [socket, pace, body, slice, sent = 0]() mutable {
        socket->write(body.mid(sent, slice));
        sent += slice;
        if (sent >= body.size()) {
            pace->stop();
            socket->disconnectFromHost();
        }
    });
    pace->start(10);
}
