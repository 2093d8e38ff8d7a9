#pragma once

#include <cstdlib>

namespace marbex::fuzz {

// What is not so is a finding.
inline void Must(bool holds)
{
    if (!holds) std::abort();
}

}  // namespace marbex::fuzz
