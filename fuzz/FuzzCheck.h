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

// Each target is one translation unit that includes this header once: the program's log lines are
// noise there.
extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    return 0;
}

inline QByteArray bytes(const uint8_t* data, size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), int(size));
}
