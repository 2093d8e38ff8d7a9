#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "marbex_opos/check/check.h"
#include "marbex_opos/commands.h"
#include "marbex_opos/output.h"
#include "marbex_opos/printing/printer_session.h"
#include "marbex_opos/printing/test_page.h"
#include "marbex_opos/process_settings.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/files.h"
#include "platform/picture.h"
#include "platform/text.h"

namespace marbex::tools {

namespace {

constexpr uint64_t kLargestFile = 16 << 20;  // bytes

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

bool BeginsLikeAPicture(std::string_view file)
{
    static constexpr std::string_view kBeginnings[] = {"BM", "\x89PNG", "\xFF\xD8\xFF", "GIF8"};
    return std::ranges::any_of(kBeginnings, [&](std::string_view beginning) { return file.starts_with(beginning); });
}

// A text in pieces that print like the whole: they end with lines, and from the first escape sequence on, which may
// hold for all that follows, it is one.
std::vector<std::u16string_view> PiecesOf(std::u16string_view text)
{
    constexpr std::size_t kSmallest = 2048;  // units
    constexpr std::size_t kMost = 200;       // pieces
    const std::size_t size = std::max(kSmallest, text.size() / kMost);
    const std::size_t escape = text.find(u'\x1B');
    std::vector<std::u16string_view> pieces;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t lineEnd = text.find(u'\n', at + size);
        const std::size_t end = lineEnd >= escape ? text.size() : lineEnd + 1;
        pieces.push_back(text.substr(at, end - at));
        at = end;
    }
    return pieces;
}

// How far a long print is, on a terminal.
class Progress {
public:
    Progress(std::string what, std::size_t whole) : what_(std::move(what)), whole_(whole) {}
    ~Progress()
    {
        if (isShown_) Print("\r" + std::string(what_.size() + kPercent.size(), ' ') + "\r");
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(std::size_t done)
    {
        if (!OutputIsTerminal() || done >= whole_) return;
        Print("\r" + what_ + ": " + std::to_string(done * 100 / whole_) + " %");
        isShown_ = true;
    }

private:
    static constexpr std::string_view kPercent = ": 100 %";
    std::string what_;
    std::size_t whole_;
    bool isShown_ = false;
};

class PrintJob {
public:
    PrintJob(PrinterSession& printer, const PrintOptions& options) : printer_(printer), options_(options) {}

    int Run(const std::string& file, const platform::Picture* picture)
    {
        if (printer_.Probe() != opos::OPOS_SUCCESS) return Fail("not printed: " + printer_.WhyNotPrinted());
        const int status = options_.testPage    ? PrintPage()
                           : picture != nullptr ? PrintPicture(*picture)
                                                : PrintText(file);
        if (status != 0) return status;
        if (options_.cut && printer_.Call("CutPaper", {opos::PTR_CP_FULLCUT}) != opos::OPOS_SUCCESS) {
            return Fail("printed, but not cut: " + printer_.WhyNotPrinted());
        }
        const std::string what = options_.testPage    ? "the test page"
                                 : picture != nullptr ? options_.file
                                                      : std::to_string(file.size()) + " bytes of " + options_.file;
        Print(options_.device + ": printed " + what + "\n");
        if (printer_.Number(opos::PIDXPtr_RecNearEnd) != 0) Print(options_.device + ": the paper is running out\n");
        return 0;
    }

private:
    int Fail(const std::string& why) const { return Complain(options_.device + ": " + why); }

    // What went to the printer and was not confirmed. held: it has all that was sent and waits to print it.
    int FailUnconfirmed(const std::string& confirmed)
    {
        const int32_t extended = printer_.Number(opos::PIDX_ResultCodeExtended);
        const bool isCover = extended == opos::OPOS_EPTR_COVER_OPEN;
        if (printer_.Number(opos::PIDX_ResultCode) == opos::OPOS_E_EXTENDED &&
            (isCover || extended == opos::OPOS_EPTR_REC_EMPTY)) {
            return Fail(std::string("stopped: ") + (isCover ? "the cover is open" : "the paper has run out") +
                        "; what the printer has it prints when " +
                        (isCover ? "the cover is closed" : "there is paper") + confirmed);
        }
        return Fail("sent, but the printer did not confirm it: " + printer_.LastResult() + confirmed +
                    "; look at the paper before you print again");
    }

    int PrintText(const std::string& file)
    {
        const std::u16string text = platform::Utf16FromUtf8(file);
        WarnOfLostCharacters(text);
        Progress progress(options_.device, text.size());
        std::size_t done = 0;
        for (const std::u16string_view piece : PiecesOf(text)) {
            progress.Show(done);
            if (printer_.PrintNormal(piece) != opos::OPOS_SUCCESS) {
                const std::string part = " (" + std::to_string(done * 100 / text.size()) + " % is confirmed)";
                return FailUnconfirmed(done > 0 ? part : std::string());
            }
            done += piece.size();
        }
        return 0;
    }

    int PrintPicture(const platform::Picture& picture)
    {
        const int32_t dots = printer_.PaperDots();
        const int32_t width = picture.Width() > static_cast<uint32_t>(dots) ? dots : opos::PTR_BM_ASIS;
        const int32_t result = printer_.Call(
            "PrintBitmap", {opos::PTR_S_RECEIPT, platform::Utf16FromUtf8(options_.file), width, opos::PTR_BM_CENTER});
        return result == opos::OPOS_SUCCESS ? 0 : FailUnconfirmed({});
    }

    int PrintPage()
    {
        const std::string failed = PrintTestPage(printer_, options_.device);
        return failed.empty() ? 0 : Fail("the test page ends at " + failed + ": " + printer_.WhyNotPrinted());
    }

    PrinterSession& printer_;
    const PrintOptions& options_;
};

std::optional<Step> FirstWrong(const Steps& steps)
{
    const auto wrong = std::ranges::find(steps.List(), StepState::kWrong, &Step::state);
    return wrong != steps.List().end() ? std::optional(*wrong) : std::nullopt;
}

// A bare result code helps nobody: the first step of the check that is wrong, and what to do. The port is given up
// first, for the check to open it.
int TellFirstFault(const PrinterOptions& options, std::unique_ptr<PrinterSession> printer)
{
    const std::string problem = printer->Problem();
    printer.reset();
    Complain(problem);
    if (!DeviceStore().RegistryProblem().empty()) return 1;
    std::optional<Step> wrong = FirstWrong(CheckDevice(options.device));
    if (!wrong) {
        Steps server;
        CheckServer(options.server, server);
        wrong = FirstWrong(server);
    }
    if (!wrong) return 1;
    const bool isTold = problem.find(wrong->text) != std::string::npos;
    PrintError((isTold ? "" : wrong->name + ": " + wrong->text + "\n") + "next: " + ToType(wrong->next) + "\n");
    return 1;
}

}  // namespace

int PrintFile(const PrintOptions& options)
{
    std::string file;
    std::unique_ptr<platform::Picture> picture;
    if (!options.testPage) {
        errno = 0;
        const std::optional<std::string> bytes = platform::ReadWholeFile(options.file, kLargestFile);
        const std::string why = errno != 0 ? std::generic_category().message(errno) : "not a file, or more than 16 MB";
        if (!bytes) return Complain(options.file + ": cannot be read: " + why);
        file = *bytes;
    }
    if (BeginsLikeAPicture(file)) {
        platform::PictureError error{};
        picture = platform::DecodePicture(file, error);
        if (!picture) return Complain(options.file + ": a picture that is damaged, or none");
    }
    auto printer = std::make_unique<PrinterSession>(options.server, options.device);
    if (!printer->Problem().empty()) return TellFirstFault(options, std::move(printer));
    return PrintJob(*printer, options).Run(file, picture.get());
}

int CheckPrinterHealth(const PrinterOptions& options)
{
    auto printer = std::make_unique<PrinterSession>(options.server, options.device);
    if (!printer->Problem().empty()) return TellFirstFault(options, std::move(printer));
    Print(printer->Text(opos::PIDX_DeviceDescription) + "\n");
    Print(printer->Text(opos::PIDX_ServiceObjectDescription) + "\n");
    const int32_t health = printer->Probe();
    Print("health       " + printer->LastResult() + "\n");
    return health == opos::OPOS_SUCCESS ? 0 : Complain(options.device + ": " + printer->WhyNotPrinted());
}

}  // namespace marbex::tools
