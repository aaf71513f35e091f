// The OpenVPN argument string of command 9, as text: the request target reaches the same check
// through the wire's UCS-4 field, this one mutates the words directly.
#include "DaemonProperties.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    checkArguments(QString::fromUtf8(bytes(data, size)));
    return 0;
}
