#pragma once

#include <cstdint>
#include <string>

#include "virtual_printer/web/message.h"

namespace marbex::virtual_printer {

// Who may ask. A page from elsewhere that is open in the developer's browser can send requests to this program, too:
// it is told apart by what the browser says of it (Origin, Sec-Fetch-Site), and a name that was made to lead here
// (DNS rebinding) by the Host that was asked for. Beyond this machine one has to know the token.
class Guard {
public:
    // host: what is listened on, without brackets. A token is made when others than this machine can reach it.
    Guard(const std::string& host, uint16_t port);

    const std::string& Token() const { return token_; }  // empty when none is wanted
    // What is wrong with a request; nothing when it may be answered.
    std::optional<Response> Refusal(const Request& request) const;
    // The header that lets a browser remember the token it has shown; empty when there is no need.
    std::string Cookie(const Request& request) const;

private:
    bool KnowsToken(const Request& request) const;
    bool IsOurName(std::string host) const;

    std::string host_;
    std::string port_;
    std::string cookieName_;
    std::string token_;
};

// "[::1]" for an address with colons.
std::string InBrackets(const std::string& host);

}  // namespace marbex::virtual_printer
