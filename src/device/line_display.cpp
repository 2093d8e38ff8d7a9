// The line display of three models: at the end of the printer's own link, or of its second one.

#include "opos/line_display.h"
#include "device/printer_device.h"
#include "opos/common.h"
#include "platform/text.h"
#include "support/service_log.h"

namespace marbex::device {

using support::LogWrite;

namespace {

using namespace std::string_literals;

// Around what the printer hands on to the display.
const std::string kToDisplay = "\x1B\xB2\x44"s;
const std::string kToPrinter = "\x1B\xB2\x50"s;
const std::string kClear = "\x1B\xA0\x00"s;
const std::string kSetCursor = "\x1F\x24"s;

constexpr std::size_t kLargestCommand = sizeof(printer::DirectIODataStruct::data);

}  // namespace

std::string PrinterDevice::DisplayBytesOf(const std::string& text) const
{
    const int32_t set = DisplayCharacterSet.load();
    const uint32_t codePage = set == opos::DISP_CS_ANSI ? platform::AnsiCodePage() : static_cast<uint32_t>(set);
    std::string bytes;
    for (const char16_t unit : platform::WidenAnsi(text)) {
        if (unit <= 0x7F) {
            bytes += static_cast<char>(unit);
        } else if (platform::ToCodePage(codePage, std::u16string_view(&unit, 1), bytes) !=
                   platform::CodePageResult::kOk) {
            bytes += '?';
        }
    }
    return bytes;
}

// command and text make up what the display receives. Records and returns the result, and writes the End line of what
// was not refused.
int32_t PrinterDevice::SendDisplayCommand(const char* operation, int32_t attribute, const std::string& command,
                                          const std::string& text)
{
    if (attribute != opos::DISP_DT_NORMAL) {
        LogWrite("[%s] attribute not supported", tag_);
        return Refuse(opos::OPOS_E_ILLEGAL);
    }
    std::string bytes = command + DisplayBytesOf(text);
    if (!model_.display->onSecondLink) bytes = kToDisplay + bytes + kToPrinter;
    if (bytes.size() > kLargestCommand) {
        LogWrite("[%s] %s text too long for the display", tag_, operation);
        return Refuse(opos::OPOS_E_ILLEGAL);
    }
    const int32_t result = RecordSpoolerResult(SendDirectIO(bytes, model_.display->onSecondLink));
    LogWrite("[%s] %s End", tag_, operation);
    return result;
}

int32_t PrinterDevice::External_LineDisplay_ClearText()
{
    if (model_.display == nullptr) return POSPrinterDevice::External_LineDisplay_ClearText();
    const OperationScope scope(*this);
    SetErrorCode(0, 0);
    LogWrite("[%s] External_LineDisplay_ClearText Begin", tag_);
    return SendDisplayCommand("External_LineDisplay_ClearText", opos::DISP_DT_NORMAL, kClear, {});
}

int32_t PrinterDevice::External_LineDisplay_DisplayText(const std::string& Data, int32_t Attribute)
{
    if (model_.display == nullptr) return POSPrinterDevice::External_LineDisplay_DisplayText(Data, Attribute);
    const OperationScope scope(*this);
    SetErrorCode(0, 0);
    LogWrite("[%s] External_LineDisplay_DisplayText Begin", tag_);
    return SendDisplayCommand("External_LineDisplay_DisplayText", Attribute, {}, Data);
}

int32_t PrinterDevice::External_LineDisplay_DisplayTextAt(int32_t Row, int32_t Column, const std::string& Data,
                                                          int32_t Attribute)
{
    if (model_.display == nullptr) {
        return POSPrinterDevice::External_LineDisplay_DisplayTextAt(Row, Column, Data, Attribute);
    }
    const OperationScope scope(*this);
    SetErrorCode(0, 0);
    LogWrite("[%s] External_LineDisplay_DisplayTextAt Begin", tag_);
    std::string command = kSetCursor;
    // A display of one row takes no row.
    if (model_.display->rows > 1) command += static_cast<char>(Row & 0xFF);
    command += static_cast<char>(Column & 0xFF);
    return SendDisplayCommand("External_LineDisplay_DisplayTextAt", Attribute, command, Data);
}

}  // namespace marbex::device
