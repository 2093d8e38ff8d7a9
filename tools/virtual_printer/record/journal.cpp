#include "virtual_printer/record/journal.h"

#include <algorithm>
#include <utility>

namespace marbex::virtual_printer {

void Journal::Append(Kind kind, std::string json)
{
    bytes_ += json.size();
    items_.push_back({Next(), kind, std::move(json)});
    while (items_.size() > 1 && (items_.size() > kMostItems || bytes_ > kMostBytes)) {
        bytes_ -= items_.front().json.size();
        items_.pop_front();
        ++first_;
    }
}

std::vector<Journal::Item> Journal::From(uint64_t number, std::size_t most, std::size_t bytes) const
{
    std::vector<Item> found;
    std::size_t size = 0;
    for (uint64_t next = std::max(number, first_); next < Next() && found.size() < most && size < bytes; ++next) {
        found.push_back(items_[next - first_]);
        size += found.back().json.size();
    }
    return found;
}

}  // namespace marbex::virtual_printer
