#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/tcp.h"

namespace marbex::tests {

// What the network does at chosen moments, shared by a test and the socket it gives to the transport. A function that
// answers nothing lets the real call happen. Calls are numbered from 1.
struct SocketScript {
    using Transfer = std::optional<platform::TcpTransfer>;

    std::function<bool()> create = [] { return true; };
    std::function<std::optional<bool>(int call)> connect = [](int) { return std::nullopt; };
    std::function<Transfer(int call)> send = [](int) { return std::nullopt; };
    std::function<Transfer(int call)> receive = [](int) { return std::nullopt; };
    std::function<bool(int call)> setTimeout = [](int) { return true; };
    std::function<bool(int call)> close = [](int) { return true; };

    int connects = 0, sends = 0, receives = 0, timeouts = 0, closes = 0;
    uint32_t connectTimeout = 0;
    uint32_t sendTimeout = 0;
    uint32_t receiveTimeout = 0;
    std::vector<std::size_t> sendSizes;
    uint32_t lastError = 0;
};

// A real socket behind a script.
class ScriptedSocket final : public platform::TcpSocket {
public:
    explicit ScriptedSocket(SocketScript& script) : script_(script) {}

    bool Create() override { return script_.create() && real_->Create(); }

    bool Connect(uint32_t address, uint16_t port, uint32_t timeoutMilliseconds) override
    {
        script_.connectTimeout = timeoutMilliseconds;
        if (const auto result = script_.connect(++script_.connects)) return *result;
        return real_->Connect(address, port, timeoutMilliseconds);
    }

    bool SetSendTimeout(uint32_t milliseconds) override
    {
        script_.sendTimeout = milliseconds;
        return script_.setTimeout(++script_.timeouts) && real_->SetSendTimeout(milliseconds);
    }

    bool SetReceiveTimeout(uint32_t milliseconds) override
    {
        script_.receiveTimeout = milliseconds;
        return script_.setTimeout(++script_.timeouts) && real_->SetReceiveTimeout(milliseconds);
    }

    platform::TcpTransfer Send(std::span<const std::byte> bytes) override
    {
        script_.sendSizes.push_back(bytes.size());
        const auto result = script_.send(++script_.sends);
        if (!result) return real_->Send(bytes);
        // A scripted success really carries so many bytes.
        return result->status == platform::TcpStatus::kOk && result->count > 0
                   ? real_->Send(bytes.first(std::min(result->count, bytes.size())))
                   : *result;
    }

    platform::TcpTransfer Receive(std::span<std::byte> buffer) override
    {
        if (const auto result = script_.receive(++script_.receives)) return *result;
        return real_->Receive(buffer);
    }

    platform::TcpTransfer ReceiveUntilStopped(std::span<std::byte> buffer, uint32_t milliseconds) override
    {
        if (const auto result = script_.receive(++script_.receives)) return *result;
        return real_->ReceiveUntilStopped(buffer, milliseconds);
    }

    void HeedStop(const platform::StopSignal& stop) override { real_->HeedStop(stop); }
    void DiscardInput() override { real_->DiscardInput(); }
    bool Close() override { return script_.close(++script_.closes) && real_->Close(); }
    uint32_t LastError() const override { return script_.lastError != 0 ? script_.lastError : real_->LastError(); }

private:
    SocketScript& script_;
    std::unique_ptr<platform::TcpSocket> real_ = platform::NewTcpSocket();
};

}  // namespace marbex::tests
