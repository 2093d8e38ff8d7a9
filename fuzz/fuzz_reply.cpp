// Whatever a printer answers, in whatever pieces, every exchange ends in its time and tells a condition that makes
// sense.

#include <fuzzer/FuzzedDataProvider.h>

#include "device/model_description.h"
#include "must.h"
#include "printer/printer_encoder.h"
#include "printer/scripted_port.h"

using namespace marbex;
using fuzz::Must;

namespace {

constexpr uint64_t kSlowestRead = 3000;
// The longest that is waited for an answer is a minute, and one question more may be under way then.
constexpr uint64_t kLongestExchange = 60000 + 4 * kSlowestRead;

// Answers what the input holds; after its end nothing.
class FuzzedPort : public test::ScriptedPort {
public:
    FuzzedPort(FuzzedDataProvider& in, test::Trace& trace, test::ScriptedClock& clock)
        : ScriptedPort(trace), in_(in), clock_(clock)
    {
        onRead = [this] { clock_.now += in_.ConsumeIntegralInRange<uint64_t>(0, kSlowestRead); };
        baudRate = in_.ConsumeBool() ? 9600 : 0;
        receiveTimeout_ = in_.ConsumeIntegralInRange<uint32_t>(0, kSlowestRead);
    }

    int32_t Write(const uint8_t* buffer, std::size_t length) override
    {
        const int32_t result = ScriptedPort::Write(buffer, length);
        switch (in_.ConsumeIntegralInRange<unsigned>(0, 15)) {
            case 15:
                return 1;
            case 14:
                ++openings;
                break;
            case 13:
                pieces.push_back(std::nullopt);
                break;
            default:
                break;
        }
        for (auto count = in_.ConsumeIntegralInRange<unsigned>(0, 3); count > 0; --count)
            pieces.push_back(in_.ConsumeRandomLengthString(8));
        return result;
    }
    int32_t Read(uint8_t* buffer, uint16_t* length) override
    {
        if (pieces.empty()) clock_.now += receiveTimeout_;
        return ScriptedPort::Read(buffer, length);
    }
    comm::LinkRead ReadWithin(std::span<uint8_t> room, uint32_t milliseconds, std::size_t& count) override
    {
        if (!pieces.empty()) return ScriptedPort::ReadWithin(room, milliseconds, count);
        clock_.now += milliseconds;
        count = 0;
        return comm::LinkRead::kNothing;
    }

private:
    FuzzedDataProvider& in_;
    test::ScriptedClock& clock_;
    uint32_t receiveTimeout_;
};

void CheckCondition(const printer::PrinterStatus& status, bool answered, bool failed)
{
    for (const uint8_t flag : status.flags)
        Must(flag <= 1);
    Must(status.NoResponse() == !answered);
    Must(failed == (!answered || status.PaperJam()));
    if (status.PaperEnd()) Must(status.PaperNearEnd());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider in(bytes, size);
    const auto models = device::ModelDescriptions();
    const auto& model = models[in.ConsumeIntegralInRange<std::size_t>(0, models.size() - 1)];
    test::Trace trace;
    test::ScriptedClock clock;
    FuzzedPort port(in, trace, clock);
    printer::CPrinterEncoder encoder(model.encoder, clock);
    encoder.AttachPort(&port);
    encoder.Open();
    printer::BitmapDataStruct bitmap{8, 2, -1, 1, std::make_unique<uint8_t[]>(16)};
    while (in.remaining_bytes() > 0) {
        const uint64_t began = clock.now;
        printer::PrinterStatus status;
        switch (in.ConsumeIntegralInRange<unsigned>(0, 6)) {
            case 0:
                encoder.CheckPrinter();
                break;
            case 1:
                encoder.InitialiseAtOpen();
                break;
            case 2:
                encoder.PrintBitmap(bitmap);
                break;
            case 3:
                encoder.BeginOutput();
                encoder.PrintText("text\n");
                break;
            case 4: {
                const uint32_t opening = port.openings;
                const bool confirmed = encoder.ConfirmReceipt(encoder.OutputBegin(), status);
                CheckCondition(status, confirmed, encoder.IsInError());
                if (confirmed) Must(port.openings == opening);
                break;
            }
            default: {
                uint32_t full = 0;
                const bool answered = encoder.GetStatus(status, false, &full) == 0;
                CheckCondition(status, answered, encoder.IsInError());
                break;
            }
        }
        Must(clock.now - began <= kLongestExchange);
    }
    encoder.DetachPort();
    return 0;
}
