#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "platform/automation.h"
#include "platform/lock.h"

namespace marbex::device {

// The control object's side of the service: its IDispatch, held without a reference as the standard's service objects
// do, and the four callback methods. Nothing is called through it once it is detached; a call that is under way then is
// the control object's own.
class ControlObject {
public:
    // Asks for the four callbacks; false, and nothing is attached, when dispatch is null or lacks one of them.
    bool Attach(IDispatch* dispatch);
    void Detach();

    // Each is false when nothing is attached or the call fails. On the thread that delivers events.
    bool SODirectIO(int32_t EventNumber, int32_t Data, const std::u16string& String);
    bool SOError(int32_t ResultCode, int32_t ResultCodeExtended, int32_t ErrorLocus, int32_t& ErrorResponse);
    bool SOOutputComplete(int32_t OutputID);
    bool SOStatusUpdate(int32_t Data);

private:
    enum Callback : std::size_t { kDirectIO, kError, kOutputComplete, kStatusUpdate, kCallbacks };

    bool Call(Callback callback, VARIANT* argumentsLastFirst, UINT count);

    platform::Lock lock_;
    IDispatch* dispatch_ MARBEX_GUARDED_BY(lock_) = nullptr;
    std::array<DISPID, kCallbacks> EventDispIds MARBEX_GUARDED_BY(lock_){};
};

}  // namespace marbex::device
