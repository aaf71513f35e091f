// The update check's answer: an offer has both a version and a link, or is none.
#include "AccountAnswer.h"
#include "FuzzCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QPair<QString, QString> offer = AccountAnswer::updateOffer(bytes(data, size));
    FUZZ_CHECK(offer.first.isEmpty() == offer.second.isEmpty(), offer.first + QLatin1Char(' ') + offer.second);
    return 0;
}
