#pragma once

#include <cstdint>

namespace marbex::tests {

// Whether a system that these tests run on may be without a code page.
inline bool MayBeMissing(uint32_t codePage)
{
    return codePage == 20290;  // Katakana of mainframes
}

}  // namespace marbex::tests
