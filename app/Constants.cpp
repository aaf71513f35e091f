#include "Constants.h"

namespace Constants {

ProgramInfo getProgramInfo()
{
    return ProgramInfo {123, 27, 4, 3, 2023};
}

} // namespace Constants
