#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/kernel.h"
#include "platform/window.h"

namespace marbex::events {

// The window messages by which records are delivered.
inline constexpr uint32_t WM_SO_DIRECTIO_EVENT_MESSAGE = platform::kFirstApplicationMessage + 1;
inline constexpr uint32_t WM_SO_ERROR_EVENT_MESSAGE = platform::kFirstApplicationMessage + 2;
inline constexpr uint32_t WM_SO_OUTPUTCOMPLETE_EVENT_MESSAGE = platform::kFirstApplicationMessage + 3;
inline constexpr uint32_t WM_SO_STATUSUPDATE_EVENT_MESSAGE = platform::kFirstApplicationMessage + 4;

// One event. Shared by the queue or the event thread, by the posted message and by whoever waits for its answer; freed
// by whoever is last.
struct EventRecord : std::enable_shared_from_this<EventRecord> {
    explicit EventRecord(uint32_t messageNumber) : message(messageNumber) {}
    virtual ~EventRecord() = default;
    EventRecord(const EventRecord&) = delete;
    EventRecord& operator=(const EventRecord&) = delete;

    const uint32_t message;
};

struct DirectIOEventRecord final : EventRecord {
    DirectIOEventRecord(int32_t number, int32_t value, std::u16string text)
        : EventRecord(WM_SO_DIRECTIO_EVENT_MESSAGE), eventNumber(number), data(value), string(std::move(text))
    {
    }
    const int32_t eventNumber;
    const int32_t data;
    const std::u16string string;
};

// What an error event's answer is about: a job that failed, or the printer alone.
enum class ErrorOrigin { kJob, kPolling };

struct ErrorEventRecord final : EventRecord {
    ErrorEventRecord(int32_t code, int32_t extended, int32_t locus, int32_t response, ErrorOrigin from);

    const int32_t resultCode;
    const int32_t resultCodeExtended;
    const int32_t errorLocus;
    const ErrorOrigin origin;
    std::atomic<int32_t> errorResponse;  // as preset, then as the application leaves it

    // Takes answer unless there is one already; true when it was taken. Any thread.
    bool Resolve(int32_t answer);
    bool IsResolved() const { return resolved_.load(); }
    int32_t Answer() const { return answer_.load(); }

    // Signalled once the record is resolved. One a record, so that of two threads that wait for answers neither can
    // miss its own when the other begins a new wait.
    const std::unique_ptr<platform::Event> ErrorResponseReturned;

private:
    std::atomic<bool> resolved_{false};
    std::atomic<int32_t> answer_{0};
    std::atomic_flag taken_ = ATOMIC_FLAG_INIT;
};

struct OutputCompleteEventRecord final : EventRecord {
    explicit OutputCompleteEventRecord(int32_t id) : EventRecord(WM_SO_OUTPUTCOMPLETE_EVENT_MESSAGE), outputId(id) {}
    const int32_t outputId;
};

struct StatusUpdateEventRecord final : EventRecord {
    explicit StatusUpdateEventRecord(int32_t value) : EventRecord(WM_SO_STATUSUPDATE_EVENT_MESSAGE), data(value) {}
    const int32_t data;
};

}  // namespace marbex::events
