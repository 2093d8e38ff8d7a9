#pragma once

// COM for as long as a function needs it.

#include <objbase.h>

#include <memory>

namespace marbex::platform {

struct ComRelease {
    void operator()(IUnknown* object) const { object->Release(); }
};

template <typename Interface>
using ComPointer = std::unique_ptr<Interface, ComRelease>;

// The calling thread may have initialised COM in either way, or not at all.
class ComScope {
public:
    ComScope() : initialised_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {}
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;
    ~ComScope()
    {
        if (initialised_) CoUninitialize();
    }

private:
    const bool initialised_;
};

}  // namespace marbex::platform
