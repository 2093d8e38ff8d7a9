#include <atomic>

#include "platform/debugger.h"
#include "platform/files.h"

namespace marbex::platform {

namespace {

std::atomic<DebugOutputSink> debugOutputSink{nullptr};

}  // namespace

void WriteDebugOutput(std::string_view text)
{
    if (const DebugOutputSink sink = debugOutputSink.load(std::memory_order_acquire)) {
        sink(text);
        return;
    }
    WriteToDebugger(text);
}

void CaptureDebugOutput(DebugOutputSink sink)
{
    debugOutputSink.store(sink, std::memory_order_release);
}

}  // namespace marbex::platform
