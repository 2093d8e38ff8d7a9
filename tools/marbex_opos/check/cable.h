#pragma once

// A link to a printer for a few questions.

#include <cstdint>
#include <string>
#include <string_view>

namespace marbex::tools {

class Cable {
public:
    virtual ~Cable() = default;  // closes it

    // All of it, within the sending time of the profile, at most two seconds.
    virtual bool Send(std::string_view bytes) = 0;
    // What has come within so many milliseconds, at most so many bytes; empty when nothing has. Waits no longer than
    // for the first byte.
    virtual std::string Receive(std::size_t most, uint32_t milliseconds) = 0;
    // The other side has ended the link.
    virtual bool IsEnded() const { return false; }
};

}  // namespace marbex::tools
