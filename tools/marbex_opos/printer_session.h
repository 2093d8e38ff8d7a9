#pragma once

// A printer in use by a command: opened, claimed, enabled; closed when it goes out of scope. Says on standard output
// what the printer reports meanwhile.

#include <cstdint>
#include <string>
#include <string_view>

#include "marbex_opos/object_session.h"

namespace marbex::tools {

class PrinterSession {
public:
    PrinterSession(const std::string& serverPath, const std::string& device);
    ~PrinterSession();
    PrinterSession(const PrinterSession&) = delete;
    PrinterSession& operator=(const PrinterSession&) = delete;

    // Why the printer is not ready: the step that failed and its result. Empty when it is.
    const std::string& Problem() const { return problem_; }

    // Only when there is no problem.
    int32_t Call(std::string_view method, std::initializer_list<Value> arguments);
    void AwaitStatus();  // until the printer has reported a cover or paper, or had the time to
    int32_t Number(int32_t property);
    std::string Text(int32_t property);
    std::string LastResult();  // the properties ResultCode and ResultCodeExtended in words

private:
    void OnEvent(const Event& event);
    void Step(std::string_view method, std::initializer_list<Value> arguments);

    std::string problem_;
    bool hasReported_ = false;
    ObjectSession session_;
    ServiceObject* printer_ = nullptr;
};

}  // namespace marbex::tools
