#pragma once

// Window classes of this module. They outlive the module that registered them, with a window procedure that is no
// longer there: so each is registered for the first window of that name and unregistered after the last.

#include <windows.h>

#include <string>

namespace marbex::platform {

// A window's claim on its class, from before the window is made until it is gone. Any thread.
class WindowClassUse {
public:
    WindowClassUse(const char* className, WNDPROC procedure);
    ~WindowClassUse();
    WindowClassUse(const WindowClassUse&) = delete;
    WindowClassUse& operator=(const WindowClassUse&) = delete;

    bool Registered() const { return registered_; }
    const char* Name() const { return name_.c_str(); }

private:
    const std::string name_;
    bool registered_ = false;
};

}  // namespace marbex::platform
