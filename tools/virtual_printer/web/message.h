#pragma once

// A request of HTTP and its answer, as far as the program's pages and its control interface need them.

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace marbex::virtual_printer {

struct Request {
    std::string method;                        // "GET"
    std::vector<std::string> path;             // "/api/printers/1" is {"api", "printers", "1"}, decoded
    std::map<std::string, std::string> query;  // decoded
    std::string body;
    // Headers that decide who may ask.
    std::string host;
    std::string origin;
    std::string fetchSite;  // Sec-Fetch-Site and -Mode: what a browser says of whose page asks
    std::string fetchMode;
    std::string authorization;
    std::string cookie;
};

// Splits and decodes what stands in a request line; nothing when it is damaged.
std::optional<Request> ParseTarget(std::string_view method, std::string_view target);

struct Response {
    int status = 200;
    std::string type = "application/json";
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers;
};
Response Problem(int status, const std::string& text);  // as JSON: {"problem": text}

// An answer that is not there yet. look is asked again whenever something happened, and at the deadline a last time.
struct Awaited {
    std::function<std::optional<Response>(bool timeIsUp)> look;
    std::chrono::steady_clock::time_point deadline;
};
// The answer is a stream of the events of a printer, from an item of its journal on.
struct EventStream {
    std::size_t printer = 0;  // index
    uint64_t from = 0;
    bool commands = false;  // also what was sent, command by command
};

using Answer = std::variant<Response, Awaited, EventStream>;

}  // namespace marbex::virtual_printer
