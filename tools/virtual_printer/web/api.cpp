#include "virtual_printer/web/api.h"

#include <charconv>

#include "virtual_printer/web/expect.h"
#include "virtual_printer/web/feed.h"
#include "virtual_printer/web/receipts.h"

namespace marbex::virtual_printer {
namespace {

using Json = nlohmann::ordered_json;

Response Ok(const Json& json)
{
    return {200, "application/json", json.dump(-1, ' ', false, Json::error_handler_t::replace), {}};
}

Response Only(const char* method)
{
    Response response = Problem(405, std::string(method) + " expected");
    response.headers.emplace_back("Allow", method);
    return response;
}

// {"cover": "open", "jam": true}: the operator's commands "cover open" and "jam on".
Response SetCondition(const Station& station, const std::string& body)
{
    const Json json = Json::parse(body, nullptr, false);
    if (!json.is_object() || json.empty()) {
        return Problem(400, "an object such as {\"cover\": \"open\"} expected");
    }
    for (const auto& [name, value] : json.items()) {
        std::string word;
        if (value.is_boolean()) {
            word = value.get<bool>() ? "on" : "off";
        } else if (value.is_string()) {
            // As the state says it, and as the command has it.
            word = value == "closed" ? "close" : value.get<std::string>();
        } else if (value.is_number_unsigned()) {
            word = std::to_string(value.get<uint64_t>());
        } else {
            return Problem(400, name + ": a word, a number or true or false expected");
        }
        const std::string problem = station.perform(name + " " + word);
        if (!problem.empty()) {
            return Problem(400, name + ": " + problem);
        }
    }
    return Ok(StateOf(station));
}

Response Perform(const Station& station, std::string line)
{
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.pop_back();
    }
    if (line.find('\n') != std::string::npos) {
        return Problem(400, "one command expected");
    }
    const std::string problem = line == "quit" ? "the program is ended where it was started" : station.perform(line);
    return problem.empty() ? Ok(StateOf(station)) : Problem(400, problem);
}

Answer Events(std::size_t printer, const Station& station, const Request& request)
{
    EventStream stream;
    stream.printer = printer;
    stream.from = station.recorder.NextItem();
    const auto from = request.query.find("from");
    if (from != request.query.end()) {
        const std::string& text = from->second;
        const auto parsed = std::from_chars(text.data(), text.data() + text.size(), stream.from);
        if (parsed.ec != std::errc() || parsed.ptr != text.data() + text.size()) {
            return Problem(400, "from: the number of an event expected");
        }
    }
    stream.commands = request.query.contains("commands");
    return stream;
}

Answer ForPrinter(const Station& station, std::size_t index, const Request& request)
{
    const bool post = request.method == "POST";
    const auto& path = request.path;
    if (path.size() == 3) {
        return post ? Only("GET") : Ok(StateOf(station));
    }
    const std::string& what = path[3];
    if (what == "receipts" && path.size() <= 5) {
        return post ? Only("GET") : path.size() == 4 ? ReceiptList(station) : Receipt(station, path[4], request);
    }
    if (path.size() == 4 && what == "events") {
        return post ? Only("GET") : Events(index, station, request);
    }
    if (path.size() == 4 && (what == "condition" || what == "command" || what == "print" || what == "expect")) {
        if (!post) {
            return Only("POST");
        }
        return what == "condition" ? SetCondition(station, request.body)
               : what == "command" ? Perform(station, request.body)
               : what == "print"   ? Feed(station, request.body)
                                   : Expect(station, request.body);
    }
    return Problem(404, "there is nothing of this name");
}

}  // namespace

Answer Api::Handle(const Request& request) const
{
    if (request.method != "GET" && request.method != "POST") {
        return Problem(405, "GET or POST expected");
    }
    const auto& path = request.path;
    if (path.size() < 2 || path[1] != "printers") {
        return Problem(404, "there is /api/printers");
    }
    if (path.size() == 2) {
        Json json{{"printers", Json::array()}};
        for (const Station& station : stations_) {
            json["printers"].push_back(StateOf(station));
        }
        return Ok(json);
    }
    std::size_t number = 0;
    const auto parsed = std::from_chars(path[2].data(), path[2].data() + path[2].size(), number);
    if (parsed.ec != std::errc() || parsed.ptr != path[2].data() + path[2].size() || number == 0 ||
        number > stations_.size()) {
        return Problem(404, "no printer " + path[2] + "; there are " + std::to_string(stations_.size()));
    }
    return ForPrinter(stations_[number - 1], number - 1, request);
}

}  // namespace marbex::virtual_printer
