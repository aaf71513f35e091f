#pragma once

#include <QString>
#include <QVector>

// `text` lower-cased as QString::toLower() does it; a text of ASCII letters is done here without a look at the
// Unicode tables, and one with nothing to change is shared rather than copied.
QString lowerCased(const QString& text);

// Positions 0 to n-1 of `texts` ordered by class (when `classes` is given, one per text), then by text as QString's
// operator< orders it, then by position. The server tables sort ten thousand names on every new list; this compares
// the leading characters as two integers and reads a name itself only when those are equal.
QVector<int> orderByText(const QVector<QString>& texts, const QVector<int>& classes = {});
