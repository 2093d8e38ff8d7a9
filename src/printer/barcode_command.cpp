#include "printer/barcode_command.h"

#include <algorithm>
#include <initializer_list>

#include "opos/printer.h"

namespace marbex::printer {

namespace {

constexpr char kEsc = 0x1B;
constexpr char kGs = 0x1D;

void Append(std::string& command, std::initializer_list<char> bytes)
{
    command.append(bytes);
}

constexpr char LowByte(int32_t number)
{
    return static_cast<char>(number & 0xFF);
}

void AppendAlignment(std::string& command, int32_t alignment)
{
    switch (alignment) {
        case opos::PTR_BC_LEFT:
            Append(command, {kEsc, 'a', 0});
            break;
        case opos::PTR_BC_CENTER:
            Append(command, {kEsc, 'a', 1});
            break;
        case opos::PTR_BC_RIGHT:
            Append(command, {kEsc, 'a', 2});
            break;
        default:
            Append(command, {kEsc, '$', LowByte(alignment), LowByte(alignment >> 8)});
            break;
    }
}

void AppendTextPosition(std::string& command, int32_t textPosition)
{
    switch (textPosition) {
        case opos::PTR_BC_TEXT_NONE:
            Append(command, {kGs, 'H', 0});
            break;
        case opos::PTR_BC_TEXT_ABOVE:
            Append(command, {kGs, 'H', 1});
            break;
        case opos::PTR_BC_TEXT_BELOW:
            Append(command, {kGs, 'H', 2});
            break;
        default:
            break;
    }
}

// The m of GS k; 0 for a symbology that the printers do not draw.
char SymbologyLetter(int32_t symbology)
{
    switch (symbology) {
        case opos::PTR_BCS_UPCA:
            return 'A';
        case opos::PTR_BCS_UPCE:
            return 'B';
        case opos::PTR_BCS_EAN8:
            return 'D';
        case opos::PTR_BCS_EAN13:
            return 'C';
        case opos::PTR_BCS_ITF:
            return 'F';
        case opos::PTR_BCS_Codabar:
            return 'G';
        case opos::PTR_BCS_Code39:
            return 'E';
        case opos::PTR_BCS_Code93:
            return 'H';
        case opos::PTR_BCS_Code128:
            return 'I';
        default:
            return 0;
    }
}

}  // namespace

std::string BarcodeCommand(const BarcodeDataStruct& barcode)
{
    std::string command;
    Append(command, {kGs, 'h', LowByte(barcode.height)});
    Append(command, {kGs, 'w', LowByte(barcode.moduleWidth)});
    AppendAlignment(command, barcode.alignment);
    AppendTextPosition(command, barcode.textPosition);
    if (const char letter = SymbologyLetter(barcode.symbology)) Append(command, {kGs, 'k', letter});
    const std::size_t length = std::min<std::size_t>(barcode.dataLength, sizeof(barcode.data));
    command.push_back(static_cast<char>(length));
    command.append(reinterpret_cast<const char*>(barcode.data), length);
    Append(command, {kEsc, 'a', 0});
    return command;
}

}  // namespace marbex::printer
