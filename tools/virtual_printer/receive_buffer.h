#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>

#include "virtual_printer/language/command_reader.h"

namespace marbex::virtual_printer {

// What the printer has taken from its link and not done yet: whole commands in their order.
class ReceiveBuffer {
public:
    explicit ReceiveBuffer(std::size_t capacity) : capacity_(capacity) {}

    std::size_t Capacity() const { return capacity_; }  // bytes
    std::size_t Used() const { return used_; }          // bytes
    bool Empty() const { return commands_.empty(); }
    const Command& First() const { return commands_.front(); }

    // The capacity is not looked at here: the link stops before it is exceeded.
    void Put(const Command& command);
    Command Take();
    std::size_t Clear();  // the bytes thrown away

private:
    std::size_t capacity_;
    std::size_t used_ = 0;
    std::deque<Command> commands_;
};

}  // namespace marbex::virtual_printer
