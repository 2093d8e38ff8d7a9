#include "platform/simulated/machine/cable.h"

#include <algorithm>

namespace marbex::simulated {
namespace {

constexpr uint32_t kSlowBytesPerSecond = 10;
constexpr int kLongestRubbish = 9;

}  // namespace

const char* NameOf(FaultKind kind)
{
    static constexpr const char* kNames[] = {"drop",       "finish",  "refuse",  "unplugged", "hang", "short write",
                                             "half reply", "rubbish", "silence", "held",      "slow"};
    return kNames[static_cast<std::size_t>(kind)];
}

Cable::Cable(FarEnd& farEnd, std::size_t capacity, uint64_t seed) : farEnd_(farEnd), capacity_(capacity), random_(seed)
{
}

void Cable::Told(const std::string& what)
{
    if (onChange) onChange(what);
}

// Whoever waits looks again when a while is over.
void Cable::LastUntil(Moment& until, Moment lasts)
{
    until = Processor().Now() + lasts;
    Processor().At(until, [this] {
        Deliver();
        changed_.WakeAll();
    });
}

void Cable::Make(FaultKind kind, Moment lasts)
{
    Told(std::string(NameOf(kind)) + " for " + std::to_string(lasts / 1000) + " ms after " +
         std::to_string(taken_.size()) + " bytes");
    switch (kind) {
        case FaultKind::kDrop:
            Break(Line::kReset);
            break;
        case FaultKind::kFinish:
            Break(Line::kFinished);
            break;
        case FaultKind::kRefuse:
            Break(Line::kReset);
            LastUntil(refuseUntil_, lasts);
            break;
        case FaultKind::kUnplugged:
            LastUntil(unpluggedUntil_, lasts);
            break;
        case FaultKind::kHang:
            Break(Line::kReset);
            LastUntil(hangUntil_, lasts);
            break;
        case FaultKind::kShortWrite:
            shortWrite_ = true;
            break;
        case FaultKind::kHalfReply:
            halfReply_ = true;
            break;
        case FaultKind::kRubbish:
            rubbish_ = true;
            break;
        case FaultKind::kSilence:
            LastUntil(silentUntil_, lasts);
            break;
        case FaultKind::kHeld:
            LastUntil(heldUntil_, lasts);
            break;
        case FaultKind::kSlow:
            LastUntil(slowUntil_, lasts);
            break;
    }
    changed_.WakeAll();
}

void Cable::PutRight()
{
    plan.clear();
    for (Moment* const until : {&refuseUntil_, &hangUntil_, &unpluggedUntil_, &heldUntil_, &silentUntil_, &slowUntil_})
        *until = 0;
    shortWrite_ = halfReply_ = rubbish_ = false;
    latency = 0;
    Poke();
}

void Cable::Poke()
{
    Deliver();
    changed_.WakeAll();
}

uint64_t Cable::Connect()
{
    if (line_ == Line::kConnected) Break(Line::kReset);
    line_ = Line::kConnected;
    ++connection_;
    outgoing_.clear();
    incoming_.clear();
    return connection_;
}

// What can still get through arrives before the connection is gone.
void Cable::Break(Line line)
{
    if (line_ != Line::kConnected) return;
    if (Flows()) HandOver(outgoing_.size());
    outgoing_.clear();
    line_ = line;
    farEnd_.Lost();
}

void Cable::Close(uint64_t connection, bool discard)
{
    if (connection != connection_) return;
    if (discard) outgoing_.clear();
    Break(Line::kIdle);
    line_ = Line::kIdle;
    incoming_.clear();
}

void Cable::Discard()
{
    outgoing_.clear();
}

std::size_t Cable::Offer(std::string_view bytes)
{
    std::size_t offered = 0;
    while (!bytes.empty() && line_ == Line::kConnected && !shortWrite_) {
        std::size_t count = std::min(bytes.size(), capacity_ - std::min(capacity_, outgoing_.size()));
        const bool planned = !plan.empty();
        if (planned)
            count = std::min<std::size_t>(count, std::max(plan.front().afterBytes, taken_.size()) - taken_.size());
        if (count == 0 && !(planned && plan.front().afterBytes <= taken_.size())) break;
        outgoing_.append(bytes.substr(0, count));
        taken_.append(bytes.substr(0, count));
        bytes.remove_prefix(count);
        offered += count;
        Deliver();
        if (planned && plan.front().afterBytes <= taken_.size()) {
            const Fault fault = plan.front();
            plan.erase(plan.begin());
            Make(fault.kind, fault.lasts);
        }
    }
    return offered;
}

void Cable::DeliverLater(Moment moment)
{
    if (std::exchange(delivering_, true)) return;
    Processor().At(moment, [this] {
        delivering_ = false;
        Deliver();
        changed_.WakeAll();
    });
}

// Hands on what can go now; the rest when the far end, or the end of a fault, asks for it.
void Cable::Deliver()
{
    if (outgoing_.empty() || !Flows() || delivering_) return;
    const Moment now = Processor().Now();
    const uint32_t pace = now < slowUntil_ ? kSlowBytesPerSecond : bytesPerSecond;
    if (pace == 0) {
        HandOver(outgoing_.size());
    } else {
        // In slices of 5 ms, or a byte at a time where that takes longer.
        const uint32_t slice = std::max(1U, pace / 200);
        HandOver(slice);
        if (!outgoing_.empty()) DeliverLater(now + uint64_t{slice} * 1'000'000 / pace);
    }
}

void Cable::HandOver(std::size_t count)
{
    count = std::min({count, outgoing_.size(), farEnd_.Room()});
    if (count == 0) return;
    const std::string bytes = outgoing_.substr(0, count);
    outgoing_.erase(0, count);
    delivered_ += bytes;
    Answer(farEnd_.Take(bytes));
}

void Cable::Answer(std::string bytes)
{
    if (bytes.empty() || Processor().Now() < silentUntil_) return;
    if (std::exchange(halfReply_, false)) bytes.resize(bytes.size() / 2);
    if (std::exchange(rubbish_, false)) {
        for (int left = random_.Between(1, kLongestRubbish); left > 0; --left)
            bytes.insert(bytes.begin(), static_cast<char>(random_.Below(256)));
    }
    if (latency == 0) {
        incoming_ += bytes;
        return;
    }
    Processor().At(Processor().Now() + 2 * latency, [this, bytes = std::move(bytes), connection = connection_] {
        if (connection == connection_ && line_ == Line::kConnected) incoming_ += bytes;
        changed_.WakeAll();
    });
}

bool Cable::Await(const platform::TransferLimit& limit)
{
    if (limit.IsOver()) return false;
    changed_.Wait(Processor().Now() + Milliseconds(limit.Slice()));
    return true;
}

std::size_t Cable::Fetch(char* room, std::size_t size)
{
    const std::size_t count = incoming_.copy(room, size);
    incoming_.erase(0, count);
    return count;
}

Wiring& TheWiring()
{
    static auto& wiring = *new Wiring;
    return wiring;
}

}  // namespace marbex::simulated
