#include "virtual_printer/web/feed.h"

#include <algorithm>
#include <memory>
#include <span>

#include <nlohmann/json.hpp>

namespace marbex::virtual_printer {
namespace {

constexpr std::chrono::seconds kLongest{10};

}  // namespace

Answer Feed(const Station& station, const std::string& bytes)
{
    struct Feeding {
        std::string bytes;
        std::size_t taken = 0;
        Bytes answer;
    };
    auto feeding = std::make_shared<Feeding>();
    feeding->bytes = bytes;
    Awaited awaited;
    awaited.deadline = std::chrono::steady_clock::now() + kLongest;
    awaited.look = [feeding, &server = station.server](bool timeIsUp) -> std::optional<Response> {
        // In pieces, so that a till is not kept waiting.
        while (feeding->taken < feeding->bytes.size()) {
            const auto rest = std::as_bytes(std::span(feeding->bytes)).subspan(feeding->taken);
            const std::size_t piece = std::min(rest.size(), std::size_t{4096});
            const PrinterServer::Fed fed = server.Feed({reinterpret_cast<const uint8_t*>(rest.data()), piece});
            feeding->answer.insert(feeding->answer.end(), fed.answer.begin(), fed.answer.end());
            feeding->taken += fed.taken;
            if (fed.taken < piece) {
                break;
            }
        }
        const bool all = feeding->taken == feeding->bytes.size();
        if (!all && !timeIsUp) {
            return std::nullopt;
        }
        nlohmann::ordered_json json{{"taken", feeding->taken}, {"answer", HexText(feeding->answer)}};
        if (!all) {
            json["problem"] = "the printer took no more";
        }
        return Response{all ? 200 : 503, "application/json", json.dump(), {}};
    };
    return awaited;
}

}  // namespace marbex::virtual_printer
