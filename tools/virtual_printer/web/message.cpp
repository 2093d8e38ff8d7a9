#include "virtual_printer/web/message.h"

#include <nlohmann/json.hpp>

namespace marbex::virtual_printer {
namespace {

int HexDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// The percent encoding of RFC 3986.
std::optional<std::string> Decoded(std::string_view text)
{
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded.push_back(text[i]);
            continue;
        }
        const int high = i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? HexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        decoded.push_back(static_cast<char>(high * 16 + low));
        i += 2;
    }
    return decoded;
}

// Calls take with each part between the separators; false when it does.
template <class Take>
bool ForEachPart(std::string_view text, char separator, const Take& take)
{
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        if (!take(text.substr(0, end))) {
            return false;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return true;
}

}  // namespace

std::optional<Request> ParseTarget(std::string_view method, std::string_view target)
{
    Request request;
    request.method = method;
    const std::size_t mark = std::min(target.find('?'), target.size());
    const bool good =
        ForEachPart(target.substr(0, mark), '/',
                    [&request](std::string_view part) {
                        const auto decoded = Decoded(part);
                        if (decoded && !decoded->empty()) {
                            request.path.push_back(*decoded);
                        }
                        return decoded.has_value();
                    }) &&
        ForEachPart(target.substr(std::min(mark + 1, target.size())), '&', [&request](std::string_view part) {
            const std::size_t equals = std::min(part.find('='), part.size());
            const auto name = Decoded(part.substr(0, equals));
            const auto value = Decoded(part.substr(std::min(equals + 1, part.size())));
            if (name && value) {
                request.query[*name] = *value;
            }
            return name && value;
        });
    return good ? std::optional(std::move(request)) : std::nullopt;
}

Response Problem(int status, const std::string& text)
{
    const nlohmann::json json{{"problem", text}};
    return {status, "application/json", json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace), {}};
}

}  // namespace marbex::virtual_printer
