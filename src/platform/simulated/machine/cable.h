#pragma once

// A cable from the simulated computer to whatever the test puts at its other end, and what may go wrong with it. TCP,
// serial and USB present the same cable in their own way.
//
// Bytes that the link has taken are under way until the far end takes them; answers come back the same way. A fault
// comes when the link has taken so many bytes, so it can fall between any two; it can be made at any moment too.

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/simulated/machine/random.h"
#include "platform/simulated/machine/scheduler.h"
#include "platform/transfer_limit.h"

namespace marbex::simulated {

// The printer's side. Called between two steps of the threads: it never waits.
class FarEnd {
public:
    virtual std::size_t Room() = 0;                        // how many bytes it takes now
    virtual std::string Take(std::string_view bytes) = 0;  // at most so many; the answer
    virtual void Lost() = 0;                               // the connection is gone

protected:
    ~FarEnd() = default;
};

enum class FaultKind {
    kDrop,        // the connection is reset; a serial line has none
    kFinish,      // the far end closes the connection
    kRefuse,      // dropped, and connecting is refused for a while
    kUnplugged,   // for a while: TCP packets go nowhere, other devices are gone
    kHang,        // dropped, and connecting hangs for a while
    kShortWrite,  // the write under way moves no more than it has
    kHalfReply,   // the next answer loses its second half
    kRubbish,     // bytes that nobody sent come with the next answer
    kSilence,     // answers are lost for a while
    kHeld,        // nothing gets through to the far end for a while
    kSlow,        // ten bytes a second for a while
};
const char* NameOf(FaultKind kind);

struct Fault {
    uint64_t afterBytes = 0;
    FaultKind kind = FaultKind::kDrop;
    Moment lasts = 0;
};

class Cable {
public:
    // capacity: bytes that can be under way.
    Cable(FarEnd& farEnd, std::size_t capacity, uint64_t seed);

    std::vector<Fault> plan;                                // ordered by afterBytes
    Moment latency = 0;                                     // each way
    uint32_t bytesPerSecond = 0;                            // 0: as fast as it goes
    std::function<void(const std::string& what)> onChange;  // told what goes wrong, for the story of a run

    void Make(FaultKind kind, Moment lasts);
    void PutRight();  // ends every fault, and those that are still planned
    void Poke();      // the far end may take bytes again

    // All bytes that the link has taken, and those of them that the far end has.
    const std::string& Taken() const { return taken_; }
    const std::string& Delivered() const { return delivered_; }

    // The computer's side. Nothing waits but Await.
    enum class Line { kIdle, kConnected, kReset, kFinished };
    // Of a connection by its number: one that has been replaced by another is gone.
    Line State(uint64_t connection) const { return connection == connection_ ? line_ : Line::kReset; }
    bool IsConnected() const { return line_ == Line::kConnected; }
    bool Unplugged() const { return Processor().Now() < unpluggedUntil_; }
    bool Hangs() const { return Processor().Now() < hangUntil_; }
    bool Refuses() const { return Processor().Now() < refuseUntil_; }
    uint64_t Connect();                             // the number of the connection
    void Close(uint64_t connection, bool discard);  // what is under way arrives, or is thrown away
    // Takes as many bytes as there is room for, up to the next planned fault.
    std::size_t Offer(std::string_view bytes);
    bool TakeShortWrite() { return std::exchange(shortWrite_, false); }
    std::size_t UnderWay() const { return outgoing_.size(); }
    void Discard();  // what is under way
    bool HasInput() const { return !incoming_.empty(); }
    std::size_t Fetch(char* room, std::size_t size);
    void DiscardInput() { incoming_.clear(); }
    // Waits for anything to change, and may return when nothing has. False when the limit is over.
    bool Await(const platform::TransferLimit& limit);

private:
    bool Flows() const { return !Unplugged() && Processor().Now() >= heldUntil_; }
    void Deliver();
    void HandOver(std::size_t count);
    void DeliverLater(Moment moment);
    void Answer(std::string bytes);
    void Break(Line line);
    void LastUntil(Moment& until, Moment lasts);
    void Told(const std::string& what);

    FarEnd& farEnd_;
    const std::size_t capacity_;
    Random random_;
    WaitPlace changed_{"a byte of the cable"};
    Line line_ = Line::kIdle;
    std::string outgoing_;
    std::string incoming_;
    std::string taken_;
    std::string delivered_;
    Moment refuseUntil_ = 0;
    Moment hangUntil_ = 0;
    Moment unpluggedUntil_ = 0;
    Moment heldUntil_ = 0;
    Moment silentUntil_ = 0;
    Moment slowUntil_ = 0;
    bool shortWrite_ = false;
    bool halfReply_ = false;
    bool rubbish_ = false;
    bool delivering_ = false;  // a delivery is on its way
    uint64_t connection_ = 0;
};

// Which cable is plugged in where. A null one, and a place that is not named, leads nowhere.
struct Wiring {
    std::map<std::pair<uint32_t, uint16_t>, Cable*> tcp;  // address in host order, port
    std::map<std::string, Cable*> serial;                 // COM1
    std::map<std::string, Cable*> usb;                    // printer name
};

Wiring& TheWiring();

}  // namespace marbex::simulated
