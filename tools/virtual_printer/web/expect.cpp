#include "virtual_printer/web/expect.h"

#include <algorithm>
#include <memory>

namespace marbex::virtual_printer {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kUsualWaitMs = 10000;
constexpr int kLongestWaitMs = 600000;
constexpr std::size_t kLinesTold = 5;

// NOLINTNEXTLINE(bugprone-exception-escape): moving a value of the JSON library asserts, and does not throw.
struct Wanted {
    Json fields;        // those an event must have
    std::string text;   // part of the text of a line
    uint64_t next = 0;  // item of the journal to look at
    int withinMs = kUsualWaitMs;
};

bool Fits(const Wanted& wanted, const Json& event)
{
    if (!wanted.text.empty()) {
        const auto text = event.find("text");
        const bool line = event.value("event", "") == "text";
        if (!line || text == event.end() || text->get<std::string>().find(wanted.text) == std::string::npos) {
            return false;
        }
    }
    return std::all_of(wanted.fields.items().begin(), wanted.fields.items().end(), [&event](const auto& field) {
        const auto found = event.find(field.key());
        return found != event.end() && *found == field.value();
    });
}

// Throws what the JSON library throws.
Wanted Parse(const std::string& body, uint64_t now)
{
    Wanted wanted;
    wanted.next = now;
    wanted.fields = Json::parse(body);
    const auto take = [&wanted](const char* name, auto& value) {
        if (wanted.fields.contains(name)) {
            wanted.fields.at(name).get_to(value);
            wanted.fields.erase(name);
        }
    };
    take("text", wanted.text);
    take("from", wanted.next);
    take("within_ms", wanted.withinMs);
    wanted.withinMs = std::clamp(wanted.withinMs, 0, kLongestWaitMs);
    return wanted;
}

Response TooLate(const Wanted& wanted, const std::string& asked, const Recorder& recorder)
{
    Json json{{"found", nullptr},
              {"problem", "nothing like " + asked + " within " + std::to_string(wanted.withinMs) + " ms"},
              {"next", wanted.next}};
    // What came instead is what the reader of a failed test wants to see.
    Json last = Json::array();
    const uint64_t end = recorder.NextItem();
    for (const Journal::Item& item : recorder.Items(end > 200 ? end - 200 : 1)) {
        const Json event = Json::parse(item.json);
        if (item.kind == Journal::Kind::kHappening && event["event"] == "text") {
            last.push_back(event["text"]);
        }
    }
    if (last.size() > kLinesTold) {
        last.erase(last.begin(), last.end() - kLinesTold);
    }
    json["last_lines"] = std::move(last);
    return {417, "application/json", json.dump(), {}};
}

}  // namespace

Answer Expect(const Station& station, const std::string& body)
{
    auto wanted = std::make_shared<Wanted>();
    try {
        *wanted = Parse(body, station.recorder.NextItem());
    } catch (const Json::exception& error) {
        return Problem(400, error.what());
    }
    if (!wanted->fields.is_object() || (wanted->fields.empty() && wanted->text.empty())) {
        return Problem(400, "a text or an event expected");
    }
    Awaited awaited;
    awaited.deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(wanted->withinMs);
    awaited.look = [wanted, body, &recorder = station.recorder](bool timeIsUp) -> std::optional<Response> {
        for (;;) {
            const std::vector<Journal::Item> items = recorder.Items(wanted->next);
            if (items.empty()) {
                break;
            }
            for (const Journal::Item& item : items) {
                wanted->next = item.number + 1;
                if (item.kind != Journal::Kind::kHappening) {
                    continue;
                }
                Json event = Json::parse(item.json);
                if (Fits(*wanted, event)) {
                    const Json json{{"found", std::move(event)}, {"next", wanted->next}};
                    return Response{200, "application/json", json.dump(), {}};
                }
            }
        }
        return timeIsUp ? std::optional(TooLate(*wanted, body, recorder)) : std::nullopt;
    };
    return awaited;
}

}  // namespace marbex::virtual_printer
