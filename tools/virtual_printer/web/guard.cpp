#include "virtual_printer/web/guard.h"

#include <algorithm>
#include <cctype>
#include <random>

namespace marbex::virtual_printer {
namespace {

bool IsThisMachineOnly(const std::string& host)
{
    return host == "localhost" || host == "::1" || host.starts_with("127.");
}

std::string MakeToken()
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::random_device source;
    std::string token;
    for (int i = 0; i < 32; ++i) {
        token.push_back(kDigits[source() % 16]);
    }
    return token;
}

// Takes as long for a near miss as for a wide one.
bool SameSecret(std::string_view a, std::string_view b)
{
    unsigned difference = a.size() == b.size() ? 0 : 1;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        difference |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(b[i]);
    }
    return difference == 0;
}

}  // namespace

std::string InBrackets(const std::string& host)
{
    return host.find(':') == std::string::npos ? host : "[" + host + "]";
}

Guard::Guard(const std::string& host, uint16_t port)
    : host_(host),
      port_(std::to_string(port)),
      cookieName_("marbex_bench_" + port_),
      token_(IsThisMachineOnly(host) ? "" : MakeToken())
{
}

bool Guard::IsOurName(std::string host) const
{
    std::transform(host.begin(), host.end(), host.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const std::string& name :
         {std::string("localhost"), std::string("127.0.0.1"), std::string("[::1]"), InBrackets(host_)}) {
        if (host == name + ":" + port_ || (port_ == "80" && host == name)) {
            return true;
        }
    }
    return false;
}

bool Guard::KnowsToken(const Request& request) const
{
    const auto asked = request.query.find("token");
    if (asked != request.query.end() && SameSecret(asked->second, token_)) {
        return true;
    }
    if (SameSecret(request.authorization, "Bearer " + token_)) {
        return true;
    }
    const std::string wanted = cookieName_ + "=";
    for (std::string_view cookies = request.cookie; !cookies.empty();) {
        std::string_view one = cookies.substr(0, cookies.find(';'));
        cookies.remove_prefix(std::min(one.size() + 1, cookies.size()));
        one.remove_prefix(std::min(one.find_first_not_of(' '), one.size()));
        if (one.starts_with(wanted) && SameSecret(one.substr(wanted.size()), token_)) {
            return true;
        }
    }
    return false;
}

std::optional<Response> Guard::Refusal(const Request& request) const
{
    if (token_.empty() && !IsOurName(request.host)) {
        return Problem(403, "asked for as \"" + request.host + "\", which is no name of this program's page");
    }
    if (!request.origin.empty() && request.origin != "http://" + request.host) {
        return Problem(403, "a page of " + request.origin + " may not use this program");
    }
    // A link from elsewhere may lead here; nothing else from elsewhere may.
    const bool elsewhere = request.fetchSite == "cross-site" || request.fetchSite == "same-site";
    if (elsewhere && (request.fetchMode != "navigate" || request.method != "GET")) {
        return Problem(403, "a page from elsewhere may not use this program");
    }
    if (!token_.empty() && !KnowsToken(request)) {
        return Problem(401, "the address of this page has a token in it; the program says it when it starts");
    }
    return std::nullopt;
}

std::string Guard::Cookie(const Request& request) const
{
    if (token_.empty() || !request.query.contains("token")) {
        return {};
    }
    return cookieName_ + "=" + token_ + "; HttpOnly; SameSite=Strict; Path=/";
}

}  // namespace marbex::virtual_printer
