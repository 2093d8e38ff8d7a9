#include "virtual_printer/language/link_input.h"

#include <algorithm>
#include <array>
#include <utility>

#include "virtual_printer/language/condition.h"

namespace marbex::virtual_printer {
namespace {

constexpr uint8_t kEot = 0x04;
constexpr uint8_t kEnq = 0x05;
constexpr uint8_t kDle = 0x10;
constexpr uint8_t kCan = 0x18;

struct Pattern {
    std::array<uint8_t, 3> bytes;
    bool onlyCutShort;
};

constexpr Pattern kPatterns[] = {
    {{kDle, kEot, kPrinterStatus}, false},
    {{kDle, kEot, kOfflineStatus}, false},
    {{kDle, kEot, kFullStatus}, false},
    {{kDle, kEnq, 0x02}, false},
    {{kCan, kDle, kEot}, true},
};

}  // namespace

LinkInput::LinkInput(Outlets outlets) : outlets_(std::move(outlets)), reader_(outlets_.command) {}

void LinkInput::Put(uint8_t byte)
{
    held_.push_back(byte);
    Match();
}

void LinkInput::Stopped()
{
    interrupted_ = reader_.MidCommand();
}

bool LinkInput::CutShort() const
{
    return reader_.MidCommand() && (interrupted_ || outlets_.stopped());
}

void LinkInput::Match()
{
    while (!held_.empty()) {
        const Pattern* match = nullptr;
        if (!reader_.InPayload() || CutShort()) {
            for (const Pattern& pattern : kPatterns) {
                if ((!pattern.onlyCutShort || CutShort()) &&
                    std::equal(held_.begin(), held_.end(), pattern.bytes.begin())) {
                    match = &pattern;
                }
            }
        }
        if (match == nullptr) {
            const uint8_t first = held_.front();
            held_.erase(held_.begin());
            Release(first);
        } else if (held_.size() < match->bytes.size()) {
            return;
        } else if (match->onlyCutShort) {
            outlets_.givenUp(static_cast<int>(reader_.Abandon().size()));
            reader_.Skip(1);
            interrupted_ = false;
            held_.erase(held_.begin());
        } else {
            const Bytes request = std::exchange(held_, {});
            reader_.Skip(request.size());
            if (request[1] == kEot) {
                outlets_.statusRequest(request[2]);
            } else {
                outlets_.recoverRequest(static_cast<int>(reader_.Abandon().size()));
                interrupted_ = false;
            }
        }
    }
}

void LinkInput::Release(uint8_t byte)
{
    reader_.Put(byte);
    interrupted_ = reader_.MidCommand() && (interrupted_ || outlets_.stopped());
}

Bytes LinkInput::Abandon()
{
    Bytes bytes = reader_.Abandon();
    bytes.insert(bytes.end(), held_.begin(), held_.end());
    reader_.Skip(held_.size());
    held_.clear();
    interrupted_ = false;
    return bytes;
}

}  // namespace marbex::virtual_printer
