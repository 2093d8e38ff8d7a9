#include "virtual_printer/receive_buffer.h"

#include <utility>

namespace marbex::virtual_printer {

void ReceiveBuffer::Put(const Command& command)
{
    used_ += command.bytes.size();
    commands_.push_back(command);
}

Command ReceiveBuffer::Take()
{
    Command first = std::move(commands_.front());
    commands_.pop_front();
    used_ -= first.bytes.size();
    return first;
}

std::size_t ReceiveBuffer::Clear()
{
    commands_.clear();
    return std::exchange(used_, 0);
}

}  // namespace marbex::virtual_printer
