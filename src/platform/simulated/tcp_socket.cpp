#include <algorithm>
#include <string_view>

#include "platform/tcp.h"

#include "platform/simulated/machine/cable.h"
#include "platform/simulated/machine/call.h"

namespace marbex::platform {
namespace {

using simulated::Cable;
using simulated::Call;
using simulated::Processor;

// The numbers that Linux has for these.
constexpr uint32_t kBrokenPipe = 32;
constexpr uint32_t kInputOutput = 5;
constexpr uint32_t kBadDescriptor = 9;
constexpr uint32_t kTooManyOpen = 24;
constexpr uint32_t kReset = 104;
constexpr uint32_t kNoBuffers = 105;
constexpr uint32_t kNotConnected = 107;
constexpr uint32_t kTimedOut = 110;
constexpr uint32_t kRefused = 111;

class SimulatedTcpSocket final : public TcpSocket {
public:
    SimulatedTcpSocket() = default;
    ~SimulatedTcpSocket() override { Shut(); }

    void HeedStop(const StopSignal& stop) override { stop_ = &stop; }

    bool Create() override
    {
        const Call call("socket");
        Shut();
        if (call.Fails()) return Fail(kTooManyOpen);
        made_ = true;
        return true;
    }

    bool Connect(uint32_t address, uint16_t port, uint32_t timeoutMilliseconds) override
    {
        const Call call("connect");
        if (!made_) return Fail(kBadDescriptor);
        if (call.Fails()) return Fail(kRefused);
        const TransferLimit limit(timeoutMilliseconds, *stop_);
        const auto found = simulated::TheWiring().tcp.find({address, port});
        if (found == simulated::TheWiring().tcp.end() || found->second == nullptr) {
            while (!limit.IsOver())
                nowhere_.Wait(Processor().Now() + simulated::Milliseconds(limit.Slice()));
            return Fail(kTimedOut);
        }
        Cable& cable = *found->second;
        while (cable.Unplugged() || cable.Hangs()) {
            if (!cable.Await(limit)) return Fail(kTimedOut);
        }
        if (cable.Refuses()) return Fail(kRefused);
        connection_ = cable.Connect();
        cable_ = &cable;
        return true;
    }

    bool SetSendTimeout(uint32_t milliseconds) override { return SetTimeout(sendTimeout_, milliseconds); }
    bool SetReceiveTimeout(uint32_t milliseconds) override { return SetTimeout(receiveTimeout_, milliseconds); }

    TcpTransfer Send(std::span<const std::byte> bytes) override
    {
        const Call call("send");
        if (cable_ == nullptr) return Failed(kNotConnected);
        if (call.Fails()) return Failed(kNoBuffers);
        const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        TransferLimit limit(sendTimeout_, *stop_);
        std::size_t count = 0;
        for (;;) {
            if (cable_->State(connection_) != Cable::Line::kConnected) {
                // What has gone is told now; the next call finds the failure again.
                if (count > 0) break;
                return Failed(cable_->State(connection_) == Cable::Line::kReset ? kReset : kBrokenPipe);
            }
            const std::size_t taken = cable_->Offer(text.substr(count));
            if (taken > 0) limit.Progress();
            count += taken;
            if (count == text.size() || cable_->TakeShortWrite()) break;
            if (cable_->State(connection_) != Cable::Line::kConnected) continue;
            if (!cable_->Await(limit)) break;
        }
        if (count == 0 && !text.empty()) return Failed(kTimedOut);
        return {TcpStatus::kOk, count};
    }

    TcpTransfer Receive(std::span<std::byte> buffer) override
    {
        return ReceiveWithin(buffer, TransferLimit(receiveTimeout_, *stop_));
    }

    TcpTransfer ReceiveUntilStopped(std::span<std::byte> buffer, uint32_t milliseconds) override
    {
        return ReceiveWithin(buffer, TransferLimit(milliseconds, *stop_, TransferLimit::AtStop::kEnd));
    }

    void DiscardInput() override
    {
        const Call call;
        if (cable_ != nullptr) cable_->DiscardInput();
    }

    bool Close() override
    {
        const Call call("close of a socket");
        if (!made_) return Fail(kBadDescriptor);
        Shut();
        return call.Fails() ? Fail(kInputOutput) : true;
    }

    uint32_t LastError() const override { return lastError_; }

private:
    TcpTransfer ReceiveWithin(std::span<std::byte> buffer, const TransferLimit& limit)
    {
        const Call call("receive");
        if (cable_ == nullptr) return Failed(kNotConnected);
        if (call.Fails()) return Failed(kNoBuffers);
        while (!cable_->HasInput()) {
            if (cable_->State(connection_) == Cable::Line::kFinished) return {TcpStatus::kOk, 0};
            if (cable_->State(connection_) != Cable::Line::kConnected) return Failed(kReset);
            if (!cable_->Await(limit)) return Failed(kTimedOut);
        }
        return {TcpStatus::kOk, cable_->Fetch(reinterpret_cast<char*>(buffer.data()), buffer.size())};
    }

    void Shut()
    {
        if (cable_ != nullptr) cable_->Close(connection_, false);
        cable_ = nullptr;
        made_ = false;
    }

    bool SetTimeout(uint32_t& timeout, uint32_t milliseconds)
    {
        if (!made_ || simulated::CallFails("time-out of a socket")) return Fail(kBadDescriptor);
        timeout = std::max(milliseconds, 1U);
        return true;
    }

    bool Fail(uint32_t error)
    {
        lastError_ = error;
        return false;
    }

    TcpTransfer Failed(uint32_t error)
    {
        lastError_ = error;
        if (error == kTimedOut) return {TcpStatus::kTimedOut, 0};
        return {error == kReset || error == kBrokenPipe ? TcpStatus::kAborted : TcpStatus::kFailed, 0};
    }

    const StopSignal* stop_ = &kNeverStopped;
    bool made_ = false;
    Cable* cable_ = nullptr;
    uint64_t connection_ = 0;
    simulated::WaitPlace nowhere_{"an answer from an address where nobody is"};
    uint32_t sendTimeout_ = 1;
    uint32_t receiveTimeout_ = 1;
    uint32_t lastError_ = 0;
};

}  // namespace

std::unique_ptr<TcpSocket> NewTcpSocket()
{
    return std::make_unique<SimulatedTcpSocket>();
}

}  // namespace marbex::platform
