#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace marbex::virtual_printer {

// What happened, for whoever reads it at a pace of its own: numbered items, each one JSON object as text. The oldest
// are forgotten when there are too many, so that readers cost nothing and the memory is bounded. A reader keeps the
// number of the next item it wants, and sees by a number that jumps that it came too late.
class Journal {
public:
    static constexpr std::size_t kMostItems = 20000;
    static constexpr std::size_t kMostBytes = 8U << 20U;

    enum class Kind : uint8_t {
        kHappening,  // what standard output tells as well
        kCommand,    // a command of the stream, done
        kLine,       // a stretch of paper, and which bytes made it
    };
    struct Item {
        uint64_t number = 0;
        Kind kind = Kind::kHappening;
        std::string json;
    };

    void Append(Kind kind, std::string json);
    uint64_t Next() const { return first_ + items_.size(); }  // the number of the item to come; the first is 1
    uint64_t First() const { return first_; }                 // the oldest one kept
    // Items from a number on, at most so many, and about so many bytes.
    std::vector<Item> From(uint64_t number, std::size_t most = 500, std::size_t bytes = 256U << 10U) const;

private:
    std::deque<Item> items_;
    uint64_t first_ = 1;
    std::size_t bytes_ = 0;
};

}  // namespace marbex::virtual_printer
