// OpenVPN's management lines as the client's reading thread cuts them: at each line feed, the
// line kept to its first LineBufferSize - 1 bytes.
#include "FuzzCheck.h"
#include "ManagementLine.h"
#include "OpenVPNConnectorQt.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray stream = bytes(data, size);
    for (int start = 0; start < stream.size();) {
        int end = stream.indexOf('\n', start);
        if (end < 0)
            end = stream.size();
        const QByteArray line = stream.mid(start, std::min(end - start, OpenVPNConnectorQt::LineBufferSize - 1));
        const ManagementLine read = ManagementLine::read(line);
        if (read.kind == ManagementLine::ByteCount) {
            // The counts OpenVPN would have written read back the same.
            const QByteArray written
                = ">BYTECOUNT:" + QByteArray::number(read.bytesIn) + ',' + QByteArray::number(read.bytesOut);
            const ManagementLine again = ManagementLine::read(written);
            FUZZ_CHECK(again.bytesIn == read.bytesIn && again.bytesOut == read.bytesOut, QString::fromUtf8(line));
        }
        start = end + 1;
    }
    return 0;
}
