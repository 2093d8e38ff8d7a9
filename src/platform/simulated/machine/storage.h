#pragma once

// What the machine keeps: files, and the registry.

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace marbex::simulated {

struct Storage {
    std::map<std::string, std::string> files;  // by their path, with slashes
    bool full = false;                         // nothing can be written any more, nor made
    std::string taken;                         // a file that another program keeps to itself
    // Told what is appended to a file, before it is. Does not wait.
    std::function<void(std::string_view path, std::string_view bytes)> onAppend;

    // Replaces the registry by what a text in the .reg format says; false when it is none.
    static bool LoadRegistry(std::string_view regFile);
};

Storage& TheStorage();

}  // namespace marbex::simulated
