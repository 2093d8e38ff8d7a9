#pragma once

#include <memory>
#include <string>

namespace marbex::platform {

// A library loaded on demand; unloaded when it is destroyed.
class DynamicLibrary {
public:
    // By file name, looked up the system's own way and then beside this module; null when there is none. On POSIX a
    // name that ends in ".dll" stands for the same name ending in ".so". On Windows neither the current folder nor
    // those of PATH are searched: whoever can write there could run code in the application.
    static std::unique_ptr<DynamicLibrary> Load(const std::string& name);

    virtual ~DynamicLibrary() = default;

    // The address of an exported function, null when it is not exported. Valid while the library is loaded.
    virtual void* Symbol(const char* name) const = 0;
};

}  // namespace marbex::platform
