#pragma once

#include <QByteArray>
#include <QString>

#include <cstdio>
#include <cstdlib>

// A property that must hold for every input: when it does not, the input is a finding and
// libFuzzer keeps it (the abort is its signal).
#define FUZZ_CHECK(condition, what)                                                                                    \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::fprintf(stderr, "property failed: %s\n  %s\n", #condition, qPrintable(QString(what)));                \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)

// The program's log lines are noise here.
inline void quietLogs()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}

inline QByteArray bytes(const uint8_t* data, size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), int(size));
}
