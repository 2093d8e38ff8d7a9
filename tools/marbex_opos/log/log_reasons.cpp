#include "marbex_opos/log/log_reasons.h"

#include <algorithm>
#include <cstdio>

#include "marbex_opos/opos/code_names.h"

namespace marbex::tools {

namespace {

// What a line of either log means, by a part of its text.
struct Meaning {
    std::string_view part;
    std::string_view reason;
};

constexpr Meaning kMeanings[] = {
    {"impossibile to connect the socket", "nobody takes the connection: address, port, cable, power"},
    {"Socket connection aborted", "the printer ended the connection and does not take a new one"},
    {"IP format not correct", "IPAddress is no address such as 192.168.0.1"},
    {"Write failed: no bytes send", "the printer takes nothing: off, not ready, or its cable is out (TimeoutTX)"},
    {"Write failed: error system", "the link broke"},
    {"Read failed: no bytes read", "the printer did not answer in time (TimeoutRX)"},
    {"Read failed: error system", "the link broke"},
    {"Init failed: comm port", "there is no such serial port"},
    {"Open failed: invalid handle", "the serial port is held by another program or may not be opened by this user"},
    {"has not found in the registry", "there is no USB printer of that name (PrinterName)"},
    {"Impossible to find and open a USB", "the USB printer is not plugged in, off, or held by another program"},
    {"Device is no longer available", "the USB printer was unplugged or switched off"},
    {"USB write error timeout", "the printer takes nothing: off, not ready, or its cable is out (TimeoutTX)"},
    {"USB read timeout", "the printer did not answer in time (TimeoutRX)"},
    {"Error opening Communication Port", "OpenService gives 111; the link's lines before this one say why"},
    {"Error checking printer", "OpenService gives 107: nothing answers, or another model than PrinterModel"},
    {"FAILED", "the application's control object did not take the event"},
};

// Words of lines that tell of errors, and of lines that have such words and tell of none.
constexpr std::string_view kErrorWords[] = {"failed",    "FAILED",          "Error ",       "ERROR!",  "error ",
                                            "impossibi", "Impossibi",       "not found",    "aborted", "not valid",
                                            "no longer", "wrong parameter", "NOT CONFIRMED"};
constexpr std::string_view kHarmless[] = {"a different com type", "Clean not supported", "FireErrorEvent",
                                          "Wait For Response"};

bool Has(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

// "DoJob Printer Error 13172850": the OPOS code in the lower half, the extended one in the upper.
std::string PackedResult(const std::string& text, std::string_view before)
{
    const std::size_t at = text.find(before);
    int packed = 0;
    if (at == std::string::npos || std::sscanf(text.c_str() + at + before.size(), "%d", &packed) != 1) return {};
    return ResultText(packed & 0xFFFF, packed >> 16);
}

// The numbers in "... Begin (114, 201)".
bool Numbers(const std::string& text, std::string_view before, int& first, int& second)
{
    const std::size_t at = text.find(before);
    second = 0;
    return at != std::string::npos && std::sscanf(text.c_str() + at + before.size(), "%d, %d", &first, &second) >= 1;
}

void ExplainService(LogEntry& entry)
{
    int first = 0;
    int second = 0;
    for (const std::string_view before : {"DoJob Printer Error ", "NOT CONFIRMED ", "STILL in ERROR! ("}) {
        const std::string result = PackedResult(entry.text, before);
        if (result.empty()) continue;
        entry.isError = true;
        entry.reason = result;
    }
    if (Numbers(entry.text, "SetErrorCode Begin (", first, second) && first != 0) {
        entry.isError = true;
        entry.reason = ResultText(first, second);
    } else if (Numbers(entry.text, "FireErrorEvent Begin (", first, second)) {
        entry.isError = true;
        entry.reason = "the application is asked: " + ResultText(first, second);
    } else if (Numbers(entry.text, "FireStatusUpdateEvent Begin (", first, second)) {
        entry.reason = Named(first, NamesOfStatusEvents(ObjectKind::kPrinter));
    }
}

}  // namespace

void Explain(LogEntry& entry)
{
    if (entry.origin == LogOrigin::kSent || entry.origin == LogOrigin::kReceived) return;
    if (entry.origin == LogOrigin::kService) ExplainService(entry);
    const auto isIn = [&](std::string_view part) { return Has(entry.text, part); };
    if (!entry.isError) entry.isError = std::ranges::any_of(kErrorWords, isIn) && std::ranges::none_of(kHarmless, isIn);
    if (!entry.isError || !entry.reason.empty()) return;
    const auto meaning = std::ranges::find_if(kMeanings, isIn, &Meaning::part);
    if (meaning != std::end(kMeanings)) entry.reason = meaning->reason;
}

bool IsErrorCodeLine(std::string_view text, ErrorCodeLine& line)
{
    const std::size_t tagEnd = text.find(']');
    int code = 0;
    int extended = 0;
    if (!text.starts_with('[') || tagEnd == std::string_view::npos ||
        !Numbers(std::string(text), "SetErrorCode Begin (", code, extended)) {
        return false;
    }
    line = {std::string(text.substr(1, tagEnd - 1)), code != 0};
    return true;
}

}  // namespace marbex::tools
