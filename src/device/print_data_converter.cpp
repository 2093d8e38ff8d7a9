#include "device/print_data_converter.h"

#include <algorithm>

#include "device/ansi_characters.h"
#include "device/escape_sequences.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/text.h"
#include "printer/charset_switcher.h"
#include "support/service_log.h"

namespace marbex::device {

namespace {

// Bits of the printer's ESC ! command.
constexpr uint8_t kBold = 0x08;
constexpr uint8_t kDoubleHeight = 0x10;
constexpr uint8_t kDoubleWidth = 0x20;
constexpr uint8_t kItalic = 0x40;
constexpr uint8_t kUnderline = 0x80;

// More line feeds than this would only be a mistake in a number.
constexpr int32_t kMostLineFeeds = 512000;

// One conversion: the text, how far it is read, and the state that the printer is in at that place.
class Conversion {
public:
    Conversion(const ConverterTraits& traits, std::string_view data, printer::CharsetSwitcher charsets,
               int32_t& horizontalScale, int32_t& verticalScale, std::string& out)
        : traits_(traits),
          rest_(data),
          characters_(platform::AnsiCodePage()),
          charsets_(charsets),
          horizontalScale_(horizontalScale),
          verticalScale_(verticalScale),
          out_(out)
    {
    }

    void Run()
    {
        AppendCommand(
            "\x1B"
            "a",
            0);
        AppendCommand("\x1Bt", 0);
        while (!rest_.empty())
            Step();
        AppendCommand("\x1B!", 0);
        ResetScales();
        if (lineOpen_) out_.push_back('\n');
        AppendCommand("\x1Bt", 0);
    }

private:
    void Step()
    {
        if (const std::size_t length = AnsiCharacters::PlainRun(rest_); length != 0) {
            const std::string_view run = Take(length);
            out_.append(run);
            lineOpen_ = run.back() != '\n';
        } else if (rest_.front() == '\r') {
            Take(1);
            lineOpen_ = false;
        } else if (rest_.starts_with("\x1B|")) {
            const EscapeSequence sequence = ReadEscapeSequence(rest_, characters_, traits_.setsLeftMargin);
            Take(sequence.length);
            Perform(sequence);
        } else if (rest_.front() == '\x1B') {
            AppendOrdinary(Take(1).front());
        } else {
            ConvertForeignRun(Take(characters_.ForeignRun(rest_)));
        }
    }

    void ConvertForeignRun(std::string_view run)
    {
        wide_.clear();
        platform::WidenAnsi(run, wide_);
        for (const char16_t character : wide_) {
            if (character > 127) {
                charsets_.ConvertCharacter(character, out_);
            } else {
                out_.push_back(static_cast<char>(character));  // the second byte of a malformed pair
            }
        }
        lineOpen_ = true;
    }

    void Perform(const EscapeSequence& sequence)
    {
        const int32_t number = sequence.number;
        switch (sequence.action) {
            case EscapeAction::kUnknown:
                // Its number is dropped; its letters, which come next, print as text.
                AppendOrdinary('\x1B');
                break;
            case EscapeAction::kIgnore:
                break;
            case EscapeAction::kCut:
                out_.append(sequence.numberGiven && number < 100 ? traits_.cut.partial : traits_.cut.full);
                if (traits_.cut.endsLine) lineOpen_ = false;
                break;
            case EscapeAction::kFeedLines:
                FeedLines(sequence.numberGiven ? number : 1);
                break;
            case EscapeAction::kEmbed:
                out_.append(Take(std::min(rest_.size(), static_cast<std::size_t>(std::max(number, 0)))));
                break;
            case EscapeAction::kBold:
                SetModeBits(kBold);
                break;
            case EscapeAction::kUnderline:
                SetModeBits(kUnderline);
                break;
            case EscapeAction::kItalic:
                SetModeBits(kItalic);
                break;
            case EscapeAction::kSize:
                SetSize(number);
                break;
            case EscapeAction::kHorizontalScale:
                SetScale(horizontalScale_, number);
                break;
            case EscapeAction::kVerticalScale:
                SetScale(verticalScale_, number);
                break;
            case EscapeAction::kCentre:
                AppendCommand(
                    "\x1B"
                    "a",
                    1);
                break;
            case EscapeAction::kRight:
                AppendCommand(
                    "\x1B"
                    "a",
                    2);
                break;
            case EscapeAction::kLeftMargin:
                AppendCommand("\x1DL", static_cast<uint8_t>(number & 0xFF));
                AppendPrinterByte(static_cast<uint8_t>((number >> 8) & 0xFF));
                break;
            case EscapeAction::kNormal:
                ResetMode();
                break;
        }
    }

    void FeedLines(int32_t count)
    {
        if (count < 1) return;
        out_.append(static_cast<std::size_t>(std::min(count, kMostLineFeeds)), '\n');
        lineOpen_ = false;
    }

    // Sizes add up with what is set already; only size 1 and "normal" take anything back.
    void SetSize(int32_t number)
    {
        switch (number) {
            case 1:
                ResetMode();
                break;
            case 2:
                SetModeBits(kDoubleWidth);
                horizontalScale_ = 2;
                break;
            case 3:
                SetModeBits(kDoubleHeight);
                verticalScale_ = 2;
                break;
            case 4:
                SetModeBits(kDoubleWidth | kDoubleHeight);
                horizontalScale_ = 2;
                verticalScale_ = 2;
                break;
            default:
                break;
        }
    }

    void SetScale(int32_t& scale, int32_t number)
    {
        if (number < 1 || number > 8) return;
        scale = number;
        AppendCommand("\x1D!", static_cast<uint8_t>((horizontalScale_ - 1) * 16 + (verticalScale_ - 1)));
    }

    void SetModeBits(uint8_t bits)
    {
        printMode_ |= bits;
        AppendCommand("\x1B!", printMode_);
    }

    void ResetMode()
    {
        printMode_ = 0;
        AppendCommand("\x1B!", printMode_);
        ResetScales();
    }

    // What the printer has been told with GS ! stays in force there until the next GS !.
    void ResetScales()
    {
        horizontalScale_ = 1;
        verticalScale_ = 1;
    }

    void AppendOrdinary(char c)
    {
        out_.push_back(c);
        lineOpen_ = true;
    }

    void AppendCommand(std::string_view command, uint8_t argument)
    {
        out_.append(command);
        AppendPrinterByte(argument);
    }

    void AppendPrinterByte(uint8_t byte)
    {
        if (byte == 0) {
            out_.append(support::kNulMarker);
        } else {
            out_.push_back(static_cast<char>(byte));
        }
    }

    std::string_view Take(std::size_t length)
    {
        const std::string_view taken = rest_.substr(0, length);
        rest_.remove_prefix(length);
        return taken;
    }

    const ConverterTraits& traits_;
    std::string_view rest_;
    AnsiCharacters characters_;
    printer::CharsetSwitcher charsets_;
    int32_t& horizontalScale_;
    int32_t& verticalScale_;
    std::string& out_;
    std::u16string wide_;  // kept to reuse its memory
    uint8_t printMode_ = 0;
    bool lineOpen_ = false;
};

// The code page of the national table that the profile's sub-model stands for; 0 for none.
uint32_t FixedCodePage(std::string_view printerSubModel)
{
    if (printerSubModel.empty()) return 0;
    for (const support::SubModelStruct& subModel : support::SubModels()) {
        if (subModel.Key != printerSubModel) continue;
        // This line has had this tag on every model since the first; customers' log filters know it.
        support::LogWrite("[OrvenPOSPrinter] DoValidateDataW bSubModel %.*s",
                          static_cast<int>(subModel.DisplayName.size()), subModel.DisplayName.data());
        return subModel.CodePage;
    }
    return 0;
}

}  // namespace

int32_t PrintDataConverter::DoValidateDataW(int32_t station, std::string_view data,
                                            std::span<const support::CharSetStruct> charSets,
                                            std::string_view printerSubModel, std::string& out)
{
    const auto address = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(data.data()));
    support::LogWrite("[%s] DoValidateDataW Begin (%d, %d)", traits_.tag, station, static_cast<int32_t>(address));
    if (station != opos::PTR_S_RECEIPT) return opos::OPOS_E_ILLEGAL;

    data = data.substr(0, data.find('\0'));
    out.clear();
    out.reserve(data.size() + 128);  // and the four commands around the text
    const printer::CharsetSwitcher charsets(charSets, FixedCodePage(printerSubModel));
    Conversion(traits_, data, charsets, horizontalScale_, verticalScale_, out).Run();

    support::LogWrite("[%s] DoValidateDataW End", traits_.tag);
    return opos::OPOS_SUCCESS;
}

void PrintDataConverter::ResetScales()
{
    horizontalScale_ = 1;
    verticalScale_ = 1;
}

}  // namespace marbex::device
