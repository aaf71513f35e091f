#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>

// Reads the text fields of a request packet. A field whose text fills it to the last code point
// (no terminating zero) or holds a code point that is not a character is rejected: isNull().
namespace WireText {

QString readUcs4(const QByteArray& packet, std::size_t offset, std::size_t size);
QString readUtf8(const QByteArray& packet, std::size_t offset, std::size_t size);

// A caller's text made safe for one log line: control characters (and Unicode line breaks)
// become \xHH or \uHHHH, so a value cannot start a forged line of its own.
QString forLog(const QString& text);

} // namespace WireText
