#pragma once

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>

namespace marbex::soak {

// What happened in a session, with the time of each thing as the till's log has it. Any thread.
class Story {
public:
    void Begin();
    void Note(const std::string& what);
    // The part that concerns a receipt, and that of the service log in a till's folder.
    std::string Excerpt(uint32_t receipt, const std::string& till) const;
    // Moves the till's logs, and all that was noted, to another folder.
    void Keep(const std::string& till, const std::string& folder) const;
    void Forget(const std::string& till) const;  // removes the till's logs

private:
    mutable std::mutex mutex_;
    std::deque<std::string> lines_;
};

}  // namespace marbex::soak
