#pragma once

#include <string>

namespace marbex::tests {

// Makes a new folder for one test and gives its path.
std::string MakeTemporaryFolder();

}  // namespace marbex::tests
