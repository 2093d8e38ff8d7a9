// The output methods: check, convert, hand one job to the spooler, record its result.

#include <utility>

#include "device/printer_device.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/files.h"
#include "platform/text.h"
#include "support/service_log.h"

namespace marbex::device {

using support::LogWrite;

namespace {

constexpr int32_t kOpenClaimedEnabled = 7;

// GS 0xF8: feed to the mark.
constexpr const char* kMarkFeed = "\x1D\xF8";

}  // namespace

int32_t PrinterDevice::RecordSpoolerResult(int32_t packed)
{
    constexpr int32_t kLowestOposCode = opos::OPOS_E_CLOSED;
    int32_t result = packed & 0xFFFF;
    int32_t extended = packed >> 16;
    if (packed == spooler::kBusy) {
        result = opos::OPOS_E_BUSY;
        extended = 0;
    } else if (packed > 0 && packed < kLowestOposCode) {
        result = opos::OPOS_E_FAILURE;  // a code of the encoder's own
    }
    SetErrorCode(result, extended);
    // A job that failed reports no completion; the device is not busy with it any longer.
    activity_.CallEnds(calls_.Depth());
    return result;
}

int32_t PrinterDevice::PrintNormal(int32_t Station, const std::string& Data)
{
    const OperationScope scope(*this);
    LogWrite("[%s] PrintNormal Begin (%d, %s)", tag_, Station, Data.c_str());
    if (const int32_t refusal = Refusal(kOpenClaimedEnabled); refusal != 0) return refusal;
    if (Station != opos::PTR_S_RECEIPT) return Refuse(opos::OPOS_E_ILLEGAL);
    std::string converted;
    const int32_t verdict = converter_.DoValidateDataW(Station, Data, CharSets, PrinterSubModel, converted);
    const bool printable = verdict == 0 || verdict == opos::OPOS_E_ILLEGAL;
    const int32_t result = printable ? RecordSpoolerResult(Spooler.PrintNormal(converted, &OutputID)) : Refuse(verdict);
    LogWrite("[%s] PrintNormal End", tag_);
    return result;
}

int32_t PrinterDevice::PrintImmediate(int32_t Station, const std::string& Data)
{
    const OperationScope scope(*this);
    LogWrite("[%s] PrintImmediate Begin (%d, %s)", tag_, Station, Data.c_str());
    if (const int32_t refusal = Refusal(kOpenClaimedEnabled); refusal != 0) return refusal;
    SetErrorCode(0, 0);
    if (Station != opos::PTR_S_RECEIPT) return Refuse(opos::OPOS_E_ILLEGAL);
    std::string converted;
    const int32_t verdict = converter_.DoValidateDataW(Station, Data, CharSets, PrinterSubModel, converted);
    const bool printable = verdict == 0 || verdict == opos::OPOS_E_ILLEGAL;
    const int32_t result = printable ? RecordSpoolerResult(Spooler.PrintImmediate(converted)) : Refuse(verdict);
    LogWrite("[%s] PrintImmediate End", tag_);
    return result;
}

int32_t PrinterDevice::CutPaper(int32_t Percentage)
{
    const OperationScope scope(*this);
    LogWrite("[%s] CutPaper Begin", tag_);
    if (const int32_t refusal = Refusal(kOpenClaimedEnabled); refusal != 0) return refusal;
    int32_t fed = 0;
    if (const int32_t lines = RecLinesToPaperCut.load(); lines > 0) {
        fed = Spooler.PrintNormal(std::string(static_cast<std::size_t>(lines), '\n'), nullptr);
    }
    const int32_t cut = Spooler.CutPaper(Percentage, &OutputID);
    // Line feeds that failed may have taken queued output with them, by an event that nobody was shown.
    const int32_t result = RecordSpoolerResult(cut != 0 ? cut : fed);
    LogWrite("[%s] CutPaper End", tag_);
    return result;
}

int32_t PrinterDevice::MarkFeed(int32_t Type)
{
    const OperationScope scope(*this);
    LogWrite("[%s] MarkFeed Begin", tag_);
    if (const int32_t refusal = Refusal(kOpenClaimedEnabled); refusal != 0) return refusal;
    int32_t result = opos::OPOS_SUCCESS;
    switch (Type) {
        case opos::PTR_MF_TO_TAKEUP:
        case opos::PTR_MF_TO_NEXT_TOF:
            result = RecordSpoolerResult(Spooler.PrintNormal(kMarkFeed, &OutputID));
            break;
        case opos::PTR_MF_TO_CUTTER:
        case opos::PTR_MF_TO_CURRENT_TOF:
            return Refuse(opos::OPOS_E_ILLEGAL);
        default:
            SetErrorCode(0, 0);
            break;
    }
    LogWrite("[%s] MarkFeed End", tag_);
    return result;
}

int32_t PrinterDevice::PrintBarCode(int32_t Station, const std::string& Data, int32_t Symbology, int32_t Height,
                                    int32_t Width, int32_t Alignment, int32_t TextPosition)
{
    const OperationScope scope(*this);
    LogWrite("[%s] PrintBarCode Begin", tag_);
    if (const int32_t refusal = Refusal(kOpenClaimedEnabled); refusal != 0) return refusal;
    if (Width == 0) LogWrite("[%s] PrintBarCode - OPOS_E_ILLEGAL : Width = 0", tag_);
    if (Height == 0) LogWrite("[%s] PrintBarCode - OPOS_E_ILLEGAL : Height = 0", tag_);
    if (Width == 0 || Height == 0) return Refuse(opos::OPOS_E_ILLEGAL);

    const int32_t height = ConvertValueWithMapMode(Height);
    const int32_t width = ConvertValueWithMapMode(Width);
    const int32_t alignment = Alignment > 0 ? ConvertValueWithMapMode(Alignment) : Alignment;
    if (height == 0) {
        LogWrite("[%s] PrintBarCode - OPOS_E_ILLEGAL : Height = 0", tag_);
        return Refuse(opos::OPOS_E_ILLEGAL);
    }
    const int32_t result = RecordSpoolerResult(
        Spooler.PrintBarCode(Station, Data, Symbology, height, width, alignment, TextPosition, &OutputID));
    LogWrite("[%s] PrintBarCode End", tag_);
    return result;
}

bool PrinterDevice::FileExist(const std::string& FileName)
{
    LogWrite("[%s] FileExist Begin (%s)", tag_, FileName.c_str());
    const bool exists = platform::FileExists(FileName);
    if (exists) {
        LogWrite("[%s] FileExist - The File %s Exist", tag_, FileName.c_str());
    } else {
        LogWrite("[%s] FileExist - The File %s NOT Exist", tag_, FileName.c_str());
    }
    LogWrite("[%s] FileExist End", tag_);
    return exists;
}

int32_t PrinterDevice::PrintBitmap(int32_t Station, const std::string& FileName, int32_t Width, int32_t Alignment)
{
    const OperationScope scope(*this);
    LogWrite("[%s] PrintBitmap Begin", tag_);
    if (const int32_t refusal = Refusal(kOpenClaimedEnabled); refusal != 0) return refusal;
    if (!FileExist(FileName)) {
        LogWrite("[%s] PrintBitmap - OPOS_E_NOEXIST : The File %s Not Exist", tag_, FileName.c_str());
        return Refuse(opos::OPOS_E_NOEXIST);
    }
    if (Width == 0) {
        LogWrite("[%s] PrintBitmap - OPOS_E_ILLEGAL : Width = 0", tag_);
        return Refuse(opos::OPOS_E_ILLEGAL);
    }
    if (Width < 0 && Width != opos::PTR_BM_ASIS) return Refuse(opos::OPOS_E_ILLEGAL);
    const int32_t width = Width > 0 ? ConvertValueWithMapMode(Width) : Width;
    const int32_t alignment = Alignment > 0 ? ConvertValueWithMapMode(Alignment) : Alignment;
    if (width == 0) {
        LogWrite("[%s] PrintBitmap - OPOS_E_ILLEGAL : Width = 0", tag_);
        return Refuse(opos::OPOS_E_ILLEGAL);
    }
    const int32_t result =
        RecordSpoolerResult(Spooler.PrintBitmap(Station, FileName, width, alignment, RotateMode.load(), &OutputID));
    LogWrite("[%s] PrintBitmap End", tag_);
    return result;
}

int32_t PrinterDevice::RotatePrint(int32_t Station, int32_t Rotation)
{
    constexpr int32_t kRotationMask = 0x1FF;
    LogWrite("[%s] RotatePrint Begin (%d, %d)", tag_, Station, Rotation);
    SetErrorCode(0, 0);
    if (const int32_t refusal = Refusal(kOpenClaimedEnabled); refusal != 0) return refusal;
    if (Station != opos::PTR_S_RECEIPT) return Refuse(opos::OPOS_E_ILLEGAL);
    if ((Rotation & opos::PTR_RP_BITMAP) == 0) {
        LogWrite("[%s] RotatePrint Only bitmap rotation is supported", tag_);
        return Refuse(opos::OPOS_E_ILLEGAL);
    }
    const int32_t rotation = Rotation & kRotationMask;
    LogWrite("[%s] Rotation: %d", tag_, rotation);
    switch (rotation) {
        case opos::PTR_RP_NORMAL:
        case opos::PTR_RP_RIGHT90:
        case opos::PTR_RP_LEFT90:
        case opos::PTR_RP_ROTATE180:
            RotateMode = rotation;
            break;
        default:
            LogWrite("[%s] RotatePrint Not valid rotation parameter", tag_);
            return Refuse(opos::OPOS_E_ILLEGAL);
    }
    LogWrite("[%s] RotatePrint End", tag_);
    return opos::OPOS_SUCCESS;
}

int32_t PrinterDevice::TransactionPrint(int32_t Station, int32_t Control)
{
    const OperationScope scope(*this);
    LogWrite("[%s] TransactionPrint Begin (%d, %d)", tag_, Station, Control);
    if (const int32_t refusal = Refusal(kOpenClaimedEnabled); refusal != 0) return refusal;
    if (Station != opos::PTR_S_RECEIPT) return Refuse(opos::OPOS_E_ILLEGAL);
    int32_t result = opos::OPOS_SUCCESS;
    if (Control == opos::PTR_TP_TRANSACTION) {
        Spooler.BeginTransaction();
        SetErrorCode(0, 0);
    } else if (Control == opos::PTR_TP_NORMAL) {
        result = RecordSpoolerResult(Spooler.PrintTransaction());
    } else {
        return Refuse(opos::OPOS_E_ILLEGAL);
    }
    LogWrite("[%s] TransactionPrint End", tag_);
    return result;
}

int32_t PrinterDevice::ValidateData(int32_t Station, const std::string& Data)
{
    LogWrite("[%s] ValidateData Begin (%d, %s)", tag_, Station, Data.c_str());
    std::string converted;
    const int32_t result = converter_.DoValidateDataW(Station, Data, CharSets, PrinterSubModel, converted);
    SetErrorCode(result, 0);
    LogWrite("[%s] ValidateData End", tag_);
    return result;
}

int32_t PrinterDevice::ClearOutput()
{
    LogWrite("[%s] ClearOutput Begin", tag_);
    SetErrorCode(0, 0);
    if (Claimed.load() == 0) return Refuse(opos::OPOS_E_NOTCLAIMED);
    Spooler.Clear();
    Events.Clear();
    LogWrite("[%s] ClearOutput End", tag_);
    return opos::OPOS_SUCCESS;
}

}  // namespace marbex::device
