#pragma once

// What hangs on a printer and works through it.

#include <marbex/printer.h>

namespace marbex::detail {

// Usable while its printer is open, claimed and enabled; until then, and with a printer that has none, everything is
// answered kIllegal. Called on the printer's thread; must not outlive the printer.
class Companion : public Service {
public:
    // Opens, claims and enables; whatever fails, the device is closed again. The printer has been started before.
    Result Start()
    {
        Result result = Open(printer_.DeviceName());
        if (result != Result::kSuccess) return result;
        result = Claim(std::chrono::milliseconds(0));
        if (result == Result::kSuccess) result = Enable();
        if (result != Result::kSuccess) (void)Close();
        return result;
    }

    Result Enable(bool enabled = true)
    {
        if (!IsOpen()) return Result::kClosed;
        const bool isSet = SetNumber(opos::PIDX_DeviceEnabled, enabled);
        return isSet && (GetNumber(opos::PIDX_DeviceEnabled) != 0) == enabled ? Result::kSuccess : Result::kIllegal;
    }

protected:
    Companion(const char* progId, std::string_view deviceClass, Printer& printer)
        : Service(progId, deviceClass), printer_(printer)
    {
    }
    ~Companion() = default;

    template <typename... Arguments>
    Result Output(const char16_t* method, Arguments... arguments)
    {
        const Result result = (IsWhole(arguments) && ...) ? Do(method, arguments...) : Result::kIllegal;
        printer_.Note(result);
        return result;
    }

private:
    Printer& printer_;
};

}  // namespace marbex::detail
