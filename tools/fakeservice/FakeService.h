#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QTcpServer>
#include <QUrl>
#include <QVector>

#include "FakeCertificates.h"
#include "FakeFixture.h"

class QTcpSocket;

// A fake Velmora service on 127.0.0.1. It speaks HTTPS with a certificate for 127.0.0.1 from a throw-away authority
// (caFile(), which clients trust through TAVRIN_CA_FILE), or plain HTTP to stand in for the connectivity probe's
// site. It answers one request per connection, and can be told to misbehave so that the client's failure paths can
// be driven.
//
// Paths: /connect (act = wizardsetup, time, buy), /upd/double.xml, /download/update.deb, /download/config.ovpn,
// and / (a small page).
class FakeService : public QTcpServer
{
    Q_OBJECT

public:
    enum class Fault {
        None,
        Hang, // read the request, never answer
        Close, // close the connection without an answer
        HttpError, // answer 500
        NotXml, // answer 200 with a body that is not XML
        Empty, // answer 200 with an empty body
    };

    explicit FakeService(QObject* parent = nullptr);
    ~FakeService() override;

    // Listens on the address (127.0.0.1 unless given); port 0 picks a free one. False with a reason when the
    // certificate or the port fails.
    bool start(quint16 port = 0, QString* error = nullptr, const QHostAddress& address = QHostAddress::LocalHost);
    // The host that baseUrl() names; 127.0.0.1 unless set. The trusted certificate is also valid for the
    // end-to-end lab's name, "api.e2e.test".
    void setHostName(const QString& name) { m_hostName = name; }
    void setPlainHttp(bool plain) { m_plain = plain; }
    QString baseUrl() const;
    // The PEM file of the authority behind the trusted certificate; the same for every service of the process.
    static QString caFile() { return FakeCertificates::authorityFile(); }
    // Connections from now on get this certificate; the trusted one until changed.
    void setCertificate(FakeCertificates::Kind kind) { m_certificateKind = kind; }

    // The demo fixture until another is set.
    FakeFixture& fixture() { return m_fixture; }
    void setFixture(const FakeFixture& fixture) { m_fixture = fixture; }

    // Every request from now on gets this fault.
    void setFault(Fault fault) { m_fault = fault; }
    // Only the next `count` requests get this fault; later ones are answered normally.
    void failNext(int count, Fault fault = Fault::HttpError);
    // Answers wait this long before they are sent.
    void setDelay(int ms) { m_delayMs = ms; }
    // /connect answers this body whatever the request, until cleared with an empty array.
    void setConnectBody(const QByteArray& body) { m_connectBody = body; }
    // Downloads are sent without a Content-Length and ended by closing the connection.
    void setUnsizedDownloads(bool unsized) { m_unsized = unsized; }
    // Bodies go out at this many bytes a second, a slice every 10 ms, as over a slower link; 0 sends them at once.
    void setBodyRate(int bytesPerSecond) { m_bodyRate = bytesPerSecond; }

    // Requests read in full; a client that refused the certificate never sends one.
    int requestCount() const { return m_requests.size(); }
    QVector<QUrl> requests() const { return m_requests; }
    // Forgets faults, delay, the body override, the certificate and the request log; keeps the fixture.
    void reset();

signals:
    void requestReceived(const QUrl& url);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    void onReadyRead(QTcpSocket* socket);
    void answer(QTcpSocket* socket, const QUrl& url);
    void send(QTcpSocket* socket, int status, const QByteArray& body, const QByteArray& contentType, bool sized);
    QByteArray route(const QUrl& url, int* status, QByteArray* contentType, bool* sized);

    FakeFixture m_fixture;
    FakeCertificates::Kind m_certificateKind = FakeCertificates::Kind::Trusted;
    bool m_plain = false;
    QString m_hostName = QStringLiteral("127.0.0.1");
    Fault m_fault = Fault::None;
    Fault m_nextFault = Fault::None;
    int m_nextFaultCount = 0;
    int m_delayMs = 0;
    QByteArray m_connectBody;
    bool m_unsized = false;
    int m_bodyRate = 0;
    QVector<QUrl> m_requests;
};
