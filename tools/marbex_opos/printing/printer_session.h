#pragma once

// A printer in use by a command: opened, claimed, enabled, with confirmed output, so that a call that prints has
// succeeded only when the printer says so; closed when it goes out of scope.

#include <cstdint>
#include <string>
#include <string_view>

#include "marbex_opos/session/object_session.h"
#include "support/device_profile.h"

namespace marbex::tools {

class PrinterSession {
public:
    // device: its name or a logical one.
    PrinterSession(const std::string& serverPath, const std::string& device);
    ~PrinterSession();
    PrinterSession(const PrinterSession&) = delete;
    PrinterSession& operator=(const PrinterSession&) = delete;

    // Why the printer is not ready: the step that failed and its result. Empty when it is.
    const std::string& Problem() const { return problem_; }
    const support::DeviceProfileStruct& Profile() const { return profile_; }

    // Only when there is no problem. Calls give result codes.
    int32_t Call(std::string_view method, std::initializer_list<Value> arguments);
    int32_t PrintNormal(std::u16string_view text);
    int32_t SendBytes(std::string_view bytes);  // as they are, 128 at most; not confirmed
    int32_t Number(int32_t property);
    std::string Text(int32_t property);
    std::string LastResult();     // the properties ResultCode and ResultCodeExtended in words
    std::string WhyNotPrinted();  // the last result as a sentence: "the cover is open; close it and print again"
    int32_t PaperDots();          // how wide the paper is printed, 8 dots a millimetre

    // Asks how the printer is, behind bytes that put nothing on paper. OPOS_SUCCESS: it can print.
    int32_t Probe() { return PrintNormal({}); }

private:
    void Open(const std::string& name);
    void Step(std::string_view method, std::initializer_list<Value> arguments);

    std::string problem_;
    support::DeviceProfileStruct profile_{};
    ObjectSession session_;
    ServiceObject* printer_ = nullptr;
};

}  // namespace marbex::tools
