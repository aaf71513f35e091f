#pragma once

#include <QString>
#include <QStringView>

// The text in a base64 value of the service's answers: decoded as QByteArray::fromBase64 decodes (every character
// outside the alphabet passed over), then read as UTF-8.
QString base64Text(QStringView base64);
