#pragma once

#include <QString>

// The line every benchmark prints for each of its goals, with the limit worked out in the same run where it
// depends on a floor measured there: "goal NAME: VALUE UNIT (goal <= LIMIT UNIT) met", or "... missed".
inline QString goalLine(const char* name, double value, const char* unit, double limit)
{
    return QString::asprintf(
        "goal %s: %.1f %s (goal <= %.1f %s) %s", name, value, unit, limit, unit, value <= limit ? "met" : "missed");
}
