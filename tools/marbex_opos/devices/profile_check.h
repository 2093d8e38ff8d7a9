#pragma once

// What is odd about a device's profile as the registry holds it: the driver takes defaults for what it cannot use and
// says nothing.

#include <string>
#include <vector>

#include "platform/registry.h"

namespace marbex::tools {

struct ProfileFinding {
    std::string value;     // name of the registry value, as it stands there
    std::string shown;     // what it holds
    bool isWrong = false;  // the driver cannot do what was meant; else it only has no effect
    std::string what;      // a sentence
    std::string remedy;    // a command that mends it; may be empty
};

// device: a device of ours, as the registry writes its name. Unknown values, values of another type than their field's,
// values out of range, combinations that cannot work; the fields first, in their order.
std::vector<ProfileFinding> CheckProfile(const platform::Registry& registry, const std::string& device);

// A word of a command line as a shell takes it: in double quotes where it needs them.
std::string ShellWord(const std::string& word);

}  // namespace marbex::tools
