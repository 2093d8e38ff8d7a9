#pragma once

// A printer device that writes down what it is asked.

#include <functional>
#include <string>
#include <vector>

#include "device/posprinter_device.h"
#include "device/process_state.h"

namespace marbex::tests {

inline std::string Shown(int32_t value)
{
    return std::to_string(value);
}
inline std::string Shown(bool value)
{
    return value ? "true" : "false";
}
inline std::string Shown(const std::string& value)
{
    return value;
}
inline std::string Shown(const IDispatch* value)
{
    return value != nullptr ? "dispatch" : "none";
}
inline std::string Shown(const std::u16string& value)
{
    return std::to_string(value.size()) + " units";
}

class FakeDevice : public device::POSPrinterDevice {
public:
    using Text = std::string;
    using Calls = std::vector<std::string>;

    FakeDevice(std::string name, Calls& calls) : name_(std::move(name)), calls_(calls) {}
    ~FakeDevice() override { calls_.push_back("~" + name_); }

    // Answers every operation, and runs onCall first; one test changes them.
    int32_t result = 77;
    std::function<void(const std::string& operation)> onCall;
    bool waits = false;

    void SetClosing(bool closing) { closing_ = closing; }

    int32_t OpenService(const Text& DeviceClass, const Text& DeviceName, IDispatch* Dispatch) override
    {
        State = 2;
        return Note("OpenService", DeviceClass, DeviceName, Dispatch);
    }
    int32_t OpenService_NET(const Text& DeviceClass, const Text& DeviceName, const Text& EventFileName) override
    {
        State = 2;
        return Note("OpenService_NET", DeviceClass, DeviceName, EventFileName);
    }
    int32_t CloseService() override
    {
        const int32_t answer = Note("CloseService");
        State = 1;
        return answer;
    }
    void ControlObjectGone() override { calls_.emplace_back("ControlObjectGone()"); }
    int32_t ClaimDevice(int32_t Timeout) override { return Note("ClaimDevice", Timeout); }
    int32_t GetOpenResult() override { return Note("GetOpenResult"); }
    int32_t COFreezeEvents(bool Freeze) override { return Note("COFreezeEvents", Freeze); }
    int32_t ResetStatistics(const Text& Buffer) override { return Note("ResetStatistics", Buffer); }
    int32_t UpdateStatistics(const Text& Buffer) override { return Note("UpdateStatistics", Buffer); }
    int32_t BeginInsertion(int32_t Timeout) override { return Note("BeginInsertion", Timeout); }
    int32_t BeginRemoval(int32_t Timeout) override { return Note("BeginRemoval", Timeout); }
    int32_t ChangePrintSide(int32_t Side) override { return Note("ChangePrintSide", Side); }
    int32_t CutPaper(int32_t Percentage) override { return Note("CutPaper", Percentage); }
    int32_t EndInsertion() override { return Note("EndInsertion"); }
    int32_t EndRemoval() override { return Note("EndRemoval"); }
    int32_t MarkFeed(int32_t Type) override { return Note("MarkFeed", Type); }
    int32_t CompareFirmwareVersion(const Text& File, int32_t Result) override
    {
        return Note("CompareFirmwareVersion", File, Result);
    }
    int32_t UpdateFirmware(const Text& File) override { return Note("UpdateFirmware", File); }
    int32_t ClearPrintArea() override { return Note("ClearPrintArea"); }
    int32_t PageModePrint(int32_t Control) override { return Note("PageModePrint", Control); }
    int32_t PrintBarCode(int32_t Station, const Text& Data, int32_t Symbology, int32_t Height, int32_t Width,
                         int32_t Alignment, int32_t TextPosition) override
    {
        return Note("PrintBarCode", Station, Data, Symbology, Height, Width, Alignment, TextPosition);
    }
    int32_t PrintBitmap(int32_t Station, const Text& FileName, int32_t Width, int32_t Alignment) override
    {
        return Note("PrintBitmap", Station, FileName, Width, Alignment);
    }
    int32_t PrintImmediate(int32_t Station, const Text& Data) override { return Note("PrintImmediate", Station, Data); }
    int32_t PrintNormal(int32_t Station, const Text& Data) override { return Note("PrintNormal", Station, Data); }
    int32_t PrintTwoNormal(int32_t Stations, const Text& Data1, const Text& Data2) override
    {
        return Note("PrintTwoNormal", Stations, Data1, Data2);
    }
    int32_t RotatePrint(int32_t Station, int32_t Rotation) override { return Note("RotatePrint", Station, Rotation); }
    int32_t SetBitmap(int32_t Number, int32_t Station, const Text& FileName, int32_t Width, int32_t Alignment) override
    {
        return Note("SetBitmap", Number, Station, FileName, Width, Alignment);
    }
    int32_t SetLogo(int32_t Location, const Text& Data) override { return Note("SetLogo", Location, Data); }
    int32_t TransactionPrint(int32_t Station, int32_t Control) override
    {
        return Note("TransactionPrint", Station, Control);
    }
    int32_t ValidateData(int32_t Station, const Text& Data) override { return Note("ValidateData", Station, Data); }
    int32_t GetPropertyNumber(int32_t PropIndex) override { return Note("GetPropertyNumber", PropIndex); }
    std::optional<Text> GetPropertyString(int32_t PropIndex) override
    {
        Note("GetPropertyString", PropIndex);
        return text;
    }
    void SetPropertyString(int32_t PropIndex, const Text& String) override
    {
        Note("SetPropertyString", PropIndex, String);
    }
    void SetPropertyNumber(int32_t PropIndex, int32_t Number) override { Note("SetPropertyNumber", PropIndex, Number); }
    int32_t ReleaseDevice() override { return Note("ReleaseDevice"); }
    int32_t DirectIO(int32_t Command, int32_t* pData, std::u16string* pString) override
    {
        if (pData == nullptr || pString == nullptr) return Note("DirectIO", Command, Text("null"));
        const int32_t answer = Note("DirectIO", Command, *pData, *pString);
        if (newData.has_value()) *pData = *newData;
        if (newString.has_value()) *pString = *newString;
        return answer;
    }
    int32_t CheckHealth(int32_t Level) override { return Note("CheckHealth", Level); }
    int32_t ClearOutput() override { return Note("ClearOutput"); }
    int32_t RetrieveStatistics(Text* pBuffer) override
    {
        const int32_t answer = Note("RetrieveStatistics", *pBuffer);
        if (text.has_value()) *pBuffer = *text;
        return answer;
    }
    int32_t Claim(int32_t Timeout) override { return Note("Claim", Timeout); }
    int32_t Close() override { return Note("Close"); }
    int32_t Release() override { return Note("Release"); }
    int32_t PrintMemoryBitmap(int32_t Station, const Text& Data, int32_t Type, int32_t Width,
                              int32_t Alignment) override
    {
        return Note("PrintMemoryBitmap", Station, Data, Type, Width, Alignment);
    }
    int32_t DrawRuledLine(int32_t Station, const Text& Positions, int32_t Direction, int32_t Width, int32_t Style,
                          int32_t Color) override
    {
        return Note("DrawRuledLine", Station, Positions, Direction, Width, Style, Color);
    }
    int32_t External_CashDrawer_OpenDrawer(int32_t OnTime, int32_t OffTime) override
    {
        return Note("Kick", OnTime, OffTime);
    }
    int32_t External_LineDisplay_ClearText() override { return Note("ClearText"); }
    int32_t External_LineDisplay_DisplayText(const Text& Data, int32_t Attribute) override
    {
        return Note("DisplayText", Data, Attribute);
    }
    int32_t External_LineDisplay_DisplayTextAt(int32_t Row, int32_t Column, const Text& Data,
                                               int32_t Attribute) override
    {
        return Note("DisplayTextAt", Row, Column, Data, Attribute);
    }
    bool OperationWaitsOnThisThread() const override { return waits; }
    bool IsBeingClosed() const override { return waits && State == 1; }

    // What text operations answer and DirectIO writes back.
    std::optional<Text> text;
    std::optional<int32_t> newData;
    std::optional<std::u16string> newString;

private:
    template <typename... Values>
    int32_t Note(const std::string& operation, const Values&... values)
    {
        std::string line = operation + "(";
        ((line += Shown(values) + ","), ...);
        if (line.back() == ',') line.pop_back();
        calls_.push_back(line + ")");
        if (onCall) onCall(operation);
        return result;
    }

    const std::string name_;
    Calls& calls_;
};

}  // namespace marbex::tests
