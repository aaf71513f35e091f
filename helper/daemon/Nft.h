#pragma once

#include <QString>

// Runs an nft script as `nft -f -` would and says whether it was applied; false with the reason in error.
namespace Nft {

bool run(const QString& script, QString& error);

} // namespace Nft
