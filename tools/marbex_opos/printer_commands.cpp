#include <cstdio>
#include <optional>
#include <string>

#include "marbex_opos/commands.h"
#include "marbex_opos/printer_session.h"
#include "marbex_opos/result_names.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/files.h"
#include "platform/text.h"

namespace marbex::tools {

namespace {

constexpr uint64_t kLargestFile = 16 << 20;  // bytes
constexpr int kLinesBeforeCut = 4;           // from the print line to the cutter

const char* YesNo(int32_t value)
{
    return value != 0 ? "yes" : "no";
}

// What the till's code page does not hold prints as "?"; better to know before the customer does.
void WarnOfLostCharacters(const std::u16string& text)
{
    platform::LoadAnsiCodePage(platform::SystemRegistry());
    const std::string narrow = platform::NarrowAnsi(text);
    const std::u16string back = platform::WidenAnsi(narrow);
    if (back == text) return;
    std::fprintf(
        stderr,
        "marbex-opos: the ANSI code page %u does not hold every character of the file; the others print as \"?\"\n",
        platform::AnsiCodePage());
}

}  // namespace

int CheckPrinterHealth(const PrinterOptions& options)
{
    PrinterSession printer(options.server, options.device);
    if (!printer.Problem().empty()) return Complain(options.device + ": " + printer.Problem());
    std::printf("%s\n", printer.Text(opos::PIDX_DeviceDescription).c_str());
    std::printf("%s\n", printer.Text(opos::PIDX_ServiceObjectDescription).c_str());

    const int32_t health = printer.Call("CheckHealth", {opos::OPOS_CH_INTERNAL});
    const std::string text = printer.Text(opos::PIDX_CheckHealthText);
    std::printf("health       %s%s%s\n", ResultText(health).c_str(), text.empty() ? "" : ": ", text.c_str());
    printer.AwaitStatus();
    std::printf("cover open   %s\n", YesNo(printer.Number(opos::PIDXPtr_CoverOpen)));
    std::printf("paper out    %s\n", YesNo(printer.Number(opos::PIDXPtr_RecEmpty)));
    std::printf("paper low    %s\n", YesNo(printer.Number(opos::PIDXPtr_RecNearEnd)));
    return health == opos::OPOS_SUCCESS ? 0 : 1;
}

int PrintFile(const PrintOptions& options)
{
    const std::optional<std::string> file = platform::ReadWholeFile(options.file, kLargestFile);
    if (!file) return Complain(options.file + " cannot be read or is larger than 16 MB");
    const std::u16string text = platform::Utf16FromUtf8(*file);
    WarnOfLostCharacters(text);

    PrinterSession printer(options.server, options.device);
    if (!printer.Problem().empty()) return Complain(options.device + ": " + printer.Problem());
    int32_t result = printer.Call("PrintNormal", {opos::PTR_S_RECEIPT, text});
    if (result == opos::OPOS_SUCCESS && options.cut) {
        result = printer.Call("PrintNormal", {opos::PTR_S_RECEIPT, std::u16string(kLinesBeforeCut, u'\n')});
        if (result == opos::OPOS_SUCCESS) result = printer.Call("CutPaper", {opos::PTR_CP_FULLCUT});
    }
    if (result != opos::OPOS_SUCCESS) return Complain(options.device + ": not printed: " + printer.LastResult());
    std::printf("%s: printed %zu bytes of %s\n", options.device.c_str(), file->size(), options.file.c_str());
    return 0;
}

}  // namespace marbex::tools
