#include "device/control_object.h"

#include "platform/text.h"
#include "support/service_log.h"

namespace marbex::device {

using support::LogWrite;

namespace {

constexpr std::u16string_view kNames[] = {u"SODirectIO", u"SOError", u"SOOutputComplete", u"SOStatusUpdate"};

VARIANT LongArgument(int32_t value)
{
    VARIANT argument;
    VariantInit(&argument);
    argument.vt = VT_I4;
    argument.lVal = value;
    return argument;
}

VARIANT LongReference(LONG& value)
{
    VARIANT argument;
    VariantInit(&argument);
    argument.vt = VT_I4 | VT_BYREF;
    argument.plVal = &value;
    return argument;
}

}  // namespace

bool ControlObject::Attach(IDispatch* dispatch)
{
    Detach();
    if (dispatch == nullptr) return false;
    std::array<DISPID, kCallbacks> ids{};
    for (std::size_t i = 0; i < kCallbacks; ++i) {
        if (FAILED(platform::FindName(*dispatch, kNames[i], ids[i]))) return false;
    }
    platform::LockHold hold(lock_);
    dispatch_ = dispatch;
    EventDispIds = ids;
    return true;
}

void ControlObject::Detach()
{
    platform::LockHold hold(lock_);
    dispatch_ = nullptr;
}

bool ControlObject::Call(Callback callback, VARIANT* argumentsLastFirst, UINT count)
{
    IDispatch* dispatch = nullptr;
    DISPID id = DISPID_UNKNOWN;
    {
        platform::LockHold hold(lock_);
        dispatch = dispatch_;
        id = EventDispIds[callback];
    }
    if (dispatch == nullptr) return false;
    DISPPARAMS parameters{argumentsLastFirst, nullptr, count, 0};
    try {
        const HRESULT outcome = dispatch->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &parameters,
                                                 nullptr, nullptr, nullptr);
        if (SUCCEEDED(outcome)) return true;
        LogWrite("[ControlObject] %s FAILED (0x%08X)", platform::Utf8FromUtf16(kNames[callback]).c_str(),
                 static_cast<unsigned>(outcome));
    } catch (...) {
        // No exception is allowed out of Invoke, and one that got further would leave the job without its answer.
        LogWrite("[ControlObject] %s FAILED: the event handler has thrown an exception",
                 platform::Utf8FromUtf16(kNames[callback]).c_str());
    }
    return false;
}

bool ControlObject::SODirectIO(int32_t EventNumber, int32_t Data, const std::u16string& String)
{
    platform::BstrHolder text{std::u16string_view(String)};
    LONG data = Data;
    VARIANT arguments[3];
    VariantInit(&arguments[0]);
    arguments[0].vt = VT_BSTR | VT_BYREF;
    arguments[0].pbstrVal = text.Address();
    arguments[1] = LongReference(data);
    arguments[2] = LongArgument(EventNumber);
    return Call(kDirectIO, arguments, 3);
}

bool ControlObject::SOError(int32_t ResultCode, int32_t ResultCodeExtended, int32_t ErrorLocus, int32_t& ErrorResponse)
{
    LONG answer = ErrorResponse;
    VARIANT arguments[] = {LongReference(answer), LongArgument(ErrorLocus), LongArgument(ResultCodeExtended),
                           LongArgument(ResultCode)};
    const bool called = Call(kError, arguments, 4);
    ErrorResponse = static_cast<int32_t>(answer);
    return called;
}

bool ControlObject::SOOutputComplete(int32_t OutputID)
{
    VARIANT argument = LongArgument(OutputID);
    return Call(kOutputComplete, &argument, 1);
}

bool ControlObject::SOStatusUpdate(int32_t Data)
{
    VARIANT argument = LongArgument(Data);
    return Call(kStatusUpdate, &argument, 1);
}

}  // namespace marbex::device
