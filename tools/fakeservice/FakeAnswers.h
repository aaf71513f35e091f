#pragma once

#include <QByteArray>
#include <QString>

#include "FakeFixture.h"

// The XML documents of the Velmora service, built from a fixture. Payloads are Base64 as the client expects.
namespace FakeAnswers {

QString b64(const QString& text);
QString b64(const QByteArray& bytes);

// The whole account document answered to act=wizardsetup. Wrong credentials give `ver` and a false `auth` only.
QByteArray account(const FakeFixture& fixture, bool credentialsOk, bool withUpgrade, const QString& baseUrl);
// One `vpn` element, for tests that assemble their own documents.
QByteArray vpnElement(const FakeServer& server);
QByteArray timezone(const FakeFixture& fixture);
QByteArray buyLink(const FakeFixture& fixture);
QByteArray doubleList(const FakeFixture& fixture);
// Deterministic bytes standing in for an update package.
QByteArray package(int size);

} // namespace FakeAnswers
