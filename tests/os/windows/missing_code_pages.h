#pragma once

#include <cstdint>

namespace marbex::tests {

// Whether a system that these tests run on may be without a code page. Windows has them all, Wine is without these.
inline bool MayBeMissing(uint32_t codePage)
{
    return codePage == 858 || codePage == 20290 || codePage == 54936;
}

}  // namespace marbex::tests
