#pragma once

#include <cstdint>

#include "platform/kernel.h"

namespace marbex::spooler {

// How the spooler waits. An error answer, and so everything that waits for it, can only come from the thread that owns
// the delivery window; when the spooler waits on that very thread, the thread must run its messages meanwhile. The
// device knows the window and implements this; the base waits plainly, which is right on every other thread.
class ApplicationThread {
public:
    virtual ~ApplicationThread() = default;

    // Takes the printer mutex. False when waiting could never end or the device is closing: the caller answers BUSY.
    virtual bool AcquirePrinter(platform::Mutex& printer)
    {
        return platform::WaitForOne(printer, platform::kForever).Obtained();
    }

    // Waits for object at most timeout milliseconds; true when it was obtained.
    virtual bool Wait(platform::WaitObject& object, uint32_t timeout)
    {
        return platform::WaitForOne(object, timeout).Obtained();
    }
};

}  // namespace marbex::spooler
