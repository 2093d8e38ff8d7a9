#pragma once

// A printer made of a script, behind the port interface: records what is done to the port, in order, and plays replies
// in the pieces they were given in. Together with a clock that only moves when told to.

#include <atomic>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "comm/printer_port.h"
#include "platform/clock.h"

namespace marbex::test {

using Trace = std::vector<std::string>;

// Sleeping is what makes time pass.
class ScriptedClock : public platform::Clock {
public:
    explicit ScriptedClock(Trace* trace = nullptr) : trace_(trace) {}

    uint64_t Milliseconds() const override { return now; }
    void Sleep(uint32_t milliseconds) override
    {
        now += milliseconds;
        if (trace_ != nullptr) trace_->push_back("sleep " + std::to_string(milliseconds));
    }

    uint64_t now = 5000;

private:
    Trace* trace_;
};

class ScriptedPort : public comm::CPrinterPort {
public:
    explicit ScriptedPort(Trace& trace) : trace_(trace) {}

    // What one read brings; none: the read fails.
    using Piece = std::optional<std::string>;

    bool open = true;
    bool opens = true;  // the primary link
    bool opensSecondary = true;
    uint32_t openings = 1;  // for the test to raise
    uint32_t baudRate = 0;
    std::atomic<bool> stopped = false;
    std::deque<Piece> pieces;                 // what the next reads bring; empty reads after the last
    std::function<void()> onRead;             // time that a read takes
    std::optional<std::size_t> failingWrite;  // counted from 0
    void FailWrite(std::size_t ahead) { failingWrite = writes_ + ahead; }

    // The pieces that the next question of these bytes makes the printer send. A question asked again without an answer
    // of its own left gets silence.
    void Answer(std::string_view question, std::deque<Piece> answer)
    {
        answers_[std::string(question)].push_back(std::move(answer));
    }

    void ForgetAnswers()
    {
        answers_.clear();
        pieces.clear();
    }

    int32_t Open() override
    {
        trace_.push_back("open");
        open = opens;
        return opens ? 0 : -1;
    }
    int32_t Close() override
    {
        trace_.push_back("close");
        open = false;
        return 0;
    }
    bool IsOpen() const override { return open; }

    int32_t Write(const uint8_t* buffer, std::size_t length) override
    {
        const std::string bytes(reinterpret_cast<const char*>(buffer), length);
        trace_.push_back("write " + bytes);
        openingOfWrite_ = openings;
        if (failingWrite == writes_++) return 1;
        if (auto found = answers_.find(bytes); found != answers_.end() && !found->second.empty()) {
            for (Piece& piece : found->second.front())
                pieces.push_back(std::move(piece));
            found->second.pop_front();
        }
        return 0;
    }

    int32_t Read(uint8_t* buffer, uint16_t* length) override
    {
        if (onRead) onRead();
        const std::size_t room = *length;
        *length = 0;
        if (pieces.empty()) return 0;
        Piece& piece = pieces.front();
        if (!piece) {
            pieces.pop_front();
            return -1;
        }
        const std::size_t count = std::min(room, piece->size());
        std::memcpy(buffer, piece->data(), count);
        piece->erase(0, count);
        if (piece->empty()) pieces.pop_front();
        *length = static_cast<uint16_t>(count);
        return static_cast<int32_t>(count);
    }

    // As Read; what brings nothing is silence until the limit.
    comm::LinkRead ReadWithin(std::span<uint8_t> room, uint32_t milliseconds, std::size_t& count) override
    {
        trace_.push_back("read within " + std::to_string(milliseconds));
        auto length = static_cast<uint16_t>(room.size());
        const int32_t result = Read(room.data(), &length);
        count = result > 0 ? length : 0;
        if (result < 0) return comm::LinkRead::kFailed;
        return result > 0 ? comm::LinkRead::kArrived : comm::LinkRead::kNothing;
    }
    uint32_t Openings() const override { return openings; }
    uint32_t OpeningOfWrite() const override { return openingOfWrite_; }
    uint32_t BaudRate() const override { return baudRate; }
    void RequestStop(bool stop) override { stopped = stop; }

    int32_t CleanInput() override
    {
        trace_.push_back("clean input");
        pieces.clear();
        return 0;
    }
    int32_t CleanOutput() override
    {
        trace_.push_back("clean output");
        return 0;
    }
    void DiscardInput() override { pieces.clear(); }
    int32_t OpenSecondary(uint32_t comPort) override
    {
        trace_.push_back("open secondary " + std::to_string(comPort));
        return opensSecondary ? 0 : -1;
    }
    int32_t WriteSecondary(const uint8_t* buffer, std::size_t length) override
    {
        trace_.push_back("write secondary " + std::string(reinterpret_cast<const char*>(buffer), length));
        return opensSecondary ? 0 : 1;
    }

private:
    Trace& trace_;
    std::size_t writes_ = 0;
    uint32_t openingOfWrite_ = 0;
    std::map<std::string, std::deque<std::deque<Piece>>> answers_;
};

}  // namespace marbex::test
