#pragma once

#include <QString>
#include <QtGlobal>

namespace Constants {

// Build information; nothing reads it at present.
struct ProgramInfo
{
    quint32 version;
    quint32 build;
    quint32 buildDay;
    quint32 buildMonth;
    quint32 buildYear;
};

ProgramInfo getProgramInfo();

// The client version sent with every service request and compared by the updater.
inline const QString ClientVersion = QStringLiteral("3.6.9");

} // namespace Constants
