#pragma once

// The receipt printer. Everything here is called on the thread that opened it, and its events arrive there
// (marbex/messages.h). Text is UTF-8; print data may hold the escape sequences of OPOS, the common ones by name in
// marbex::style. Text with a U+0000 in it, which would end it, is kIllegal.
//
//     marbex::Printer printer;
//     if (const auto result = printer.Start("Till1"); result != marbex::Result::kSuccess)
//         std::cerr << Name(result) << ": " << Advice(result) << '\n';
//     printer.Print("Hello\n");
//     printer.Cut();

#include <marbex/class_ids.h>
#include <marbex/detail/service.h>
#include <opos/printer.h>

#include <functional>
#include <string>
#include <string_view>

namespace marbex {

namespace detail {
class Companion;
}

enum class State : int32_t { kClosed = 1, kIdle = 2, kBusy = 3, kError = 4 };

// What a status event says. kIdle comes when the device is enabled, too.
enum class Status : int32_t {
    kCoverOpen = 11,
    kCoverClosed = 12,
    kPaperEmpty = 24,
    kPaperLow = 25,
    kPaperOk = 26,
    kIdle = 1001,
};

// What becomes of output that failed: it is attempted again after half a second, or dropped with all that is queued.
enum class ErrorAnswer : int32_t { kRetry = 11, kClear = 12 };

enum class Alignment : int32_t { kLeft = -1, kCenter = -2, kRight = -3 };
enum class Rotation : int32_t { kNormal = 0x001, kRight90 = 0x101, kLeft90 = 0x102, k180 = 0x103 };

enum class Symbology : int32_t {
    kUpcA = 101,
    kUpcE = 102,
    kEan8 = 103,
    kEan13 = 104,
    kItf = 106,
    kCodabar = 107,
    kCode39 = 108,
    kCode93 = 109,
    kCode128 = 110,
};

struct BarCode {
    enum class Text : int32_t { kNone = -11, kAbove = -12, kBelow = -13 };

    Symbology symbology = Symbology::kCode128;
    std::string_view data;  // code 128: ASCII, in set B, unless it begins with the start code "{A", "{B" or "{C"
    int32_t height = 80;    // dots, eight a millimetre
    int32_t module = 2;     // dots of the narrowest bar, 1 to 3
    Alignment alignment = Alignment::kCenter;
    Text text = Text::kBelow;
};

// Escape sequences of print data. They hold until kNormal or the end of the text; kCenter and kRight for their line.
namespace style {
inline constexpr char kNormal[] = "\x1B|N";
inline constexpr char kBold[] = "\x1B|bC";
inline constexpr char kUnderline[] = "\x1B|uC";
inline constexpr char kItalic[] = "\x1B|iC";
inline constexpr char kWide[] = "\x1B|2C";
inline constexpr char kTall[] = "\x1B|3C";
inline constexpr char kBig[] = "\x1B|4C";
inline constexpr char kCenter[] = "\x1B|cA";
inline constexpr char kRight[] = "\x1B|rA";
}  // namespace style

class Printer final : public detail::Service {
public:
    // Events. What they throw leaves the call during which they ran. They may call any method but must not destroy the
    // printer; printing inside onError is answered kBusy.
    std::function<void(int32_t outputId)> onOutputComplete;
    std::function<void(Status)> onStatus;
    std::function<ErrorAnswer(Result)> onError;  // without it: queued output is retried, a call returns its error

    Printer() : Service(kPrinterProgId, "POSPrinter") {}
    ~Printer()
    {
        onOutputComplete = nullptr;
        onStatus = nullptr;
        onError = nullptr;
        CloseQuietly();
    }

    // Opens, claims and enables; whatever fails, the printer is closed again.
    Result Start(std::string_view deviceName, std::chrono::milliseconds claimTimeout = std::chrono::seconds(1))
    {
        Result result = Open(deviceName);
        if (result != Result::kSuccess) return result;
        result = Claim(claimTimeout);
        if (result == Result::kSuccess) result = Enable();
        if (result != Result::kSuccess) (void)Close();
        return result;
    }
    Result Open(std::string_view deviceName)
    {
        async_ = false;
        completed_ = failed_ = queued_ = 0;
        return Service::Open(deviceName);
    }
    Result Enable(bool enabled = true) { return Set(opos::PIDX_DeviceEnabled, enabled); }

    // Prints text; what the last line lacks of a line feed is added.
    Result Print(std::string_view text) { return Output(u"PrintNormal", opos::PTR_S_RECEIPT, text); }
    // The same at once, before what is queued.
    Result PrintImmediate(std::string_view text) { return Output(u"PrintImmediate", opos::PTR_S_RECEIPT, text); }
    Result Print(const BarCode& code)
    {
        return Output(u"PrintBarCode", opos::PTR_S_RECEIPT, std::string_view(DataOf(code)),
                      static_cast<int32_t>(code.symbology), code.height, code.module,
                      static_cast<int32_t>(code.alignment), static_cast<int32_t>(code.text));
    }
    // A file in BMP, GIF, JPEG or PNG; its width in the unit of the map mode, or as it is. kNoExist when there is none.
    Result PrintPicture(std::string_view file, Alignment alignment = Alignment::kCenter,
                        int32_t width = opos::PTR_BM_ASIS)
    {
        return Output(u"PrintBitmap", opos::PTR_S_RECEIPT, file, width, static_cast<int32_t>(alignment));
    }
    // Of the pictures that follow.
    Result RotatePictures(Rotation rotation)
    {
        return Do(u"RotatePrint", opos::PTR_S_RECEIPT, static_cast<int32_t>(rotation) | opos::PTR_RP_BITMAP);
    }
    // Feeds to the knife and cuts so many per cent of the paper.
    Result Cut(int32_t percentage = opos::PTR_CP_FULLCUT) { return Output(u"CutPaper", percentage); }

    // What is printed in between is collected and printed as one job, repeated as a whole when it fails.
    Result BeginTransaction() { return Do(u"TransactionPrint", opos::PTR_S_RECEIPT, opos::PTR_TP_TRANSACTION); }
    Result EndTransaction() { return Output(u"TransactionPrint", opos::PTR_S_RECEIPT, opos::PTR_TP_NORMAL); }

    // Bytes of the printer's own language, in pieces of 128 that are queued one after the other.
    Result SendBytes(std::string_view bytes)
    {
        Result result = Result::kSuccess;
        for (std::size_t at = 0; at < bytes.size() && result == Result::kSuccess; at += kMostBytes) {
            const std::string_view piece = bytes.substr(at, kMostBytes);
            std::string text;
            for (const char byte : piece)
                detail::AppendUtf8(text, static_cast<unsigned char>(byte));
            result = Do(u"DirectIO", 0, static_cast<int32_t>(piece.size()), std::string_view(text));
            Note(result);
        }
        return result;
    }

    // Asynchronous output is queued and reported by onOutputComplete, or by onError when it fails.
    Result SetAsync(bool async)
    {
        if (async_) queued_ = OutputId();
        const Result result = Set(opos::PIDXPtr_AsyncMode, async);
        if (result == Result::kSuccess) async_ = async;
        return result;
    }
    // The number of the last output.
    int32_t OutputId() { return GetNumber(opos::PIDX_OutputID); }
    // Whether output has been neither reported complete nor dropped.
    bool IsOutputPending()
    {
        const int32_t last = OutputId();
        return completed_ < queued_ || (last != completed_ && last != failed_);
    }
    // Runs messages until no output is pending; false when some still is after that time.
    bool WaitForOutput(std::chrono::milliseconds timeout)
    {
        return RunMessagesUntil([this] { return !IsOutputPending(); }, timeout);
    }
    // Drops what is queued, an open transaction and events not delivered yet.
    Result ClearOutput()
    {
        const Result result = Do(u"ClearOutput");
        if (result == Result::kSuccess) NothingIsPending();
        return result;
    }
    // Holds events back.
    Result FreezeEvents(bool freeze) { return Set(opos::PIDX_FreezeEvents, freeze); }

    State GetState() { return IsOpen() ? static_cast<State>(GetNumber(opos::PIDX_State)) : State::kClosed; }
    // As last reported; false while the printer is not enabled.
    bool IsCoverOpen() { return GetNumber(opos::PIDXPtr_CoverOpen) != 0; }
    bool IsPaperEmpty() { return GetNumber(opos::PIDXPtr_RecEmpty) != 0; }
    bool IsPaperLow() { return GetNumber(opos::PIDXPtr_RecNearEnd) != 0; }
    // How the last exchange with the printer went.
    Result CheckHealth() { return Do(u"CheckHealth", opos::OPOS_CH_INTERNAL); }
    std::string Description() { return GetText(opos::PIDX_DeviceDescription); }
    int32_t LineChars() { return GetNumber(opos::PIDXPtr_RecLineChars); }
    int32_t LineWidth() { return GetNumber(opos::PIDXPtr_RecLineWidth); }

private:
    friend class detail::Companion;

    static constexpr std::size_t kMostBytes = 128;

    Result Set(int32_t property, int32_t value)
    {
        if (!IsOpen()) return Result::kClosed;
        if (!SetNumber(property, value)) return Result::kFailure;
        return AsResult(GetNumber(opos::PIDX_ResultCode));
    }

    // Output that a call has failed to print at once is reported by nothing else.
    template <typename... Arguments>
    Result Output(const char16_t* method, Arguments... arguments)
    {
        const Result result = (IsWhole(arguments) && ...) ? Do(method, arguments...) : Result::kIllegal;
        Note(result);
        return result;
    }
    void Note(Result result)
    {
        if (result != Result::kSuccess && !async_) failed_ = OutputId();
    }
    void NothingIsPending() { completed_ = queued_ = OutputId(); }

    static std::string DataOf(const BarCode& code)
    {
        const std::string_view begin = code.data.substr(0, 2);
        const bool hasStart = begin == "{A" || begin == "{B" || begin == "{C";
        if (code.symbology != Symbology::kCode128 || hasStart) return std::string(code.data);
        std::string text = "{B";
        for (const char character : code.data)
            text.append(character == '{' ? 2 : 1, character);
        return text;
    }

    void OnOutputComplete(int32_t outputId) override
    {
        completed_ = outputId;
        if (const auto handler = onOutputComplete) handler(outputId);
    }
    void OnStatusUpdate(int32_t status) override
    {
        if (const auto handler = onStatus) handler(static_cast<Status>(status));
    }
    // A handler that throws has not answered, and the output is dropped.
    void OnError(int32_t code, int32_t extended, int32_t& response) override
    {
        const auto result = static_cast<Result>(code == opos::OPOS_E_EXTENDED ? extended : code);
        try {
            if (const auto handler = onError) response = static_cast<int32_t>(handler(result));
        } catch (...) {
            NothingIsPending();
            throw;
        }
        if (response == opos::OPOS_ER_CLEAR) NothingIsPending();
    }

    bool async_ = false;
    int32_t completed_ = 0;  // the last output reported complete
    int32_t failed_ = 0;     // the last one that a call has failed to print
    int32_t queued_ = 0;     // the last one of the asynchronous ones before the mode was changed
};

}  // namespace marbex
