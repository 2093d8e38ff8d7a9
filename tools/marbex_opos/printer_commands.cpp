#include <optional>
#include <string>

#include "marbex_opos/commands.h"
#include "marbex_opos/output.h"
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

std::string YesNo(int32_t value)
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
    PrintError("marbex-opos: the ANSI code page " + std::to_string(platform::AnsiCodePage()) +
               " does not hold every character of the file; the others print as \"?\"\n");
}

}  // namespace

int CheckPrinterHealth(const PrinterOptions& options)
{
    PrinterSession printer(options.server, options.device);
    if (!printer.Problem().empty()) return Complain(options.device + ": " + printer.Problem());
    Print(printer.Text(opos::PIDX_DeviceDescription) + "\n");
    Print(printer.Text(opos::PIDX_ServiceObjectDescription) + "\n");

    const int32_t health = printer.Call("CheckHealth", {opos::OPOS_CH_INTERNAL});
    const std::string text = printer.Text(opos::PIDX_CheckHealthText);
    Print("health       " + ResultText(health) + (text.empty() ? "" : ": ") + text + "\n");
    printer.AwaitStatus();
    Print("cover open   " + YesNo(printer.Number(opos::PIDXPtr_CoverOpen)) + "\n");
    Print("paper out    " + YesNo(printer.Number(opos::PIDXPtr_RecEmpty)) + "\n");
    Print("paper low    " + YesNo(printer.Number(opos::PIDXPtr_RecNearEnd)) + "\n");
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
    Print(options.device + ": printed " + std::to_string(file->size()) + " bytes of " + options.file + "\n");
    return 0;
}

}  // namespace marbex::tools
