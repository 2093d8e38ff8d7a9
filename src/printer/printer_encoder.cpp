#include "printer/printer_encoder.h"

#include <algorithm>
#include <string>

#include "printer/barcode_command.h"
#include "printer/cut_command.h"
#include "printer/identity_check.h"
#include "printer/nul_markers.h"
#include "printer/print_end_wait.h"
#include "printer/raster_language.h"
#include "printer/status_query.h"

namespace marbex::printer {

namespace {

constexpr uint32_t kPresenterPauseMilliseconds = 500;  // the cutter needs it before the presenter may move
constexpr uint32_t kFailedTextPauseMilliseconds = 500;
constexpr uint32_t kInitialisationPauseMilliseconds = 500;  // the printer takes no command while it starts afresh
constexpr std::size_t kMostBytesAWrite = 512000;
constexpr uint32_t kWideRasterWidth = 976;
constexpr uint64_t kBitsASerialByte = 12;
constexpr uint64_t kLongestConfirmationMilliseconds = 60000;
constexpr uint32_t kMostUnanswered = 3;

constexpr std::string_view kAfterCut = "\x1D\x65\x05";

std::string_view DirectBytes(const DirectIODataStruct& direct)
{
    const std::size_t count = std::min<std::size_t>(direct.count, sizeof(direct.data));
    return {reinterpret_cast<const char*>(direct.data), count};
}

}  // namespace

CPrinterEncoder::CPrinterEncoder(const EncoderTraits& modelTraits, platform::Clock& systemClock)
    : traits(modelTraits), clock(systemClock), rasterWidth(modelTraits.rasterWidth)
{
}

CPrinterEncoder::~CPrinterEncoder()
{
    CPrinterEncoder::DetachPort();
}

int32_t CPrinterEncoder::AttachPort(comm::CPrinterPort* newPort)
{
    if (newPort == nullptr) return kEncoderOk;
    const platform::LockHold hold(stopLock);
    port = newPort;
    port->RequestStop(stopRequested.load());
    return kEncoderOk;
}

int32_t CPrinterEncoder::DetachPort()
{
    CPrinterEncoder::Close();
    const platform::LockHold hold(stopLock);
    port = nullptr;
    return kEncoderOk;
}

void CPrinterEncoder::RequestStop(bool stop)
{
    const platform::LockHold hold(stopLock);
    stopRequested.store(stop);
    if (port != nullptr) port->RequestStop(stop);
}

int32_t CPrinterEncoder::Open()
{
    if (port == nullptr || port->IsOpen()) return kEncoderOk;
    rasterWidth = traits.rasterWidth;
    torn_ = false;
    if (port->Open() != 0) return kEncoderOpenFailed;
    if (traits.secondaryComPort != 0 && port->OpenSecondary(traits.secondaryComPort) != 0) {
        port->Close();
        return kEncoderOpenFailed;
    }
    // A printer that does not take them is found out by the identity check.
    Link().Write(traits.startUpBytes);
    return kEncoderOk;
}

void CPrinterEncoder::Close()
{
    if (Link().IsOpen()) port->Close();
}

bool CPrinterEncoder::IsOpen() const
{
    return PrinterLink(port).IsOpen();
}

int32_t CPrinterEncoder::PrintText(std::string_view text)
{
    if (traits.afterCutSequence && cutSent) {
        Link().Write(kAfterCut);
        cutSent = false;
    }
    if (!failed.load()) {
        std::string storage;
        std::string_view rest = ReplaceNulMarkers(text, storage);
        int32_t result = kEncoderOk;
        do {
            const std::string_view piece = rest.substr(0, kMostBytesAWrite);
            rest.remove_prefix(piece.size());
            result = Link().Write(piece);
        } while (result == kEncoderOk && !rest.empty());
        if (result == kEncoderOk) return kEncoderOk;
    }
    clock.Sleep(kFailedTextPauseMilliseconds);
    failed.store(true);
    return kEncoderTextNotSent;
}

int32_t CPrinterEncoder::PrintBarcode(const BarcodeDataStruct& barcode)
{
    return Link().Write(BarcodeCommand(barcode));
}

int32_t CPrinterEncoder::PrintBitmap(const BitmapDataStruct& bitmap)
{
    const int32_t result = PrintRaster(bitmap, rasterWidth, Link());
    if (result != kEncoderOk || !traits.waitsForBitmapEnd) return result;
    return WaitForPrintEnd(Link(), clock, stopRequested);
}

int32_t CPrinterEncoder::SendDirect(const DirectIODataStruct& direct)
{
    return Link().Write(DirectBytes(direct));
}

int32_t CPrinterEncoder::SendDirectSecondary(const DirectIODataStruct& direct)
{
    if (!Link().IsOpen()) return kEncoderPortNotOpen;
    const std::string_view bytes = DirectBytes(direct);
    if (bytes.empty()) return kEncoderOk;
    const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
    return port->WriteSecondary(data, bytes.size()) == 0 ? kEncoderOk : kEncoderPortFailed;
}

int32_t CPrinterEncoder::Initialize()
{
    return Link().Write("\x1B@");
}

int32_t CPrinterEncoder::CutPaper(int32_t percentage)
{
    // Before the bytes: a cut that fails half-way may have left the paper in the presenter all the same.
    if (traits.afterCutSequence) cutSent = true;
    const CutBytes bytes = CutCommandFor(traits, percentage);
    const int32_t result = Link().Write(bytes.cut);
    if (result != kEncoderOk || bytes.presenter.empty()) return result;
    clock.Sleep(kPresenterPauseMilliseconds);
    return Link().Write(bytes.presenter);
}

bool CPrinterEncoder::QueryErrorBit()
{
    return traits.queriesErrorBit && AskErrorBit(Link(), clock);
}

void CPrinterEncoder::CleanInput()
{
    Link().CleanInput();
}

void CPrinterEncoder::CleanOutput()
{
    Link().CleanOutput();
}

void CPrinterEncoder::CleanBoth()
{
    if (port != nullptr) port->CleanBoth();
}

uint32_t CPrinterEncoder::UnansweredQuestions()
{
    const uint32_t opening = Link().Openings();
    if (opening != openingOfUnanswered_) unanswered_ = 0;
    openingOfUnanswered_ = opening;
    return unanswered_;
}

bool CPrinterEncoder::Ask(const PrinterLink& link, PrinterStatus& status, uint32_t& fullStatus)
{
    const bool answered = QueryStatus(link, traits.status, status, fullStatus);
    if (!answered) unanswered_ = std::min(UnansweredQuestions() + 1, kMostUnanswered);
    return answered;
}

int32_t CPrinterEncoder::GetStatus(PrinterStatus& status, bool /*askNearEnd*/, uint32_t* fullStatus)
{
    if (traits.status == StatusVariant::kReferenceCleansOutput) {
        CleanOutput();
        // A stray byte, or an answer that came too late, would be taken for the answer to every later question.
        Link().DiscardInput();
    } else {
        CleanInput();
    }
    status = {};
    uint32_t told = 0;
    const bool answered = Ask(Link(), status, told);
    if (fullStatus != nullptr) *fullStatus = told;
    // Once, at the end: a health check on another thread must not find a silent printer healthy while it is asked.
    failed.store(!answered || status.PaperJam());
    return answered ? 0 : 1;
}

void CPrinterEncoder::BeginOutput()
{
    written_.firstOpening.reset();
    bytesBefore_ = written_.bytes;
}

OutputMark CPrinterEncoder::OutputBegin() const
{
    return {written_.firstOpening.value_or(PrinterLink(port).Openings()), bytesBefore_};
}

ReplyLimit CPrinterEncoder::LimitFor(uint64_t bytesOnTheirWay) const
{
    uint64_t milliseconds = 0;
    if (port != nullptr) {
        const uint32_t baud = port->BaudRate();
        milliseconds =
            port->ReceiveTimeout() + (baud != 0 ? bytesOnTheirWay * kBitsASerialByte * 1000 / baud : bytesOnTheirWay);
    }
    return ReplyLimit(clock, std::min(milliseconds, kLongestConfirmationMilliseconds), stopRequested);
}

bool CPrinterEncoder::ConfirmReceipt(const OutputMark& begin, PrinterStatus& status)
{
    CleanInput();
    const ReplyLimit limit = LimitFor(written_.bytes - begin.bytes);
    // As many answers more as may still come to earlier questions: then one of them at least is to a question that
    // travelled behind the output.
    uint32_t answersMissing = UnansweredQuestions() + 1;
    bool answered = true;
    while (answered && answersMissing > 0) {
        status = {};
        uint32_t told = 0;
        answered = Ask(Link().Within(limit), status, told);
        --answersMissing;
    }
    // Asked last: a link that is lost while it is asked is opened anew by the asking.
    const bool sameLink = Link().Openings() == begin.linkOpening;
    const bool confirmed = answered && sameLink;
    if (confirmed) unanswered_ = 0;
    if (!confirmed) {
        status = {};  // what a printer says over another link is no answer
        status.flags[PrinterStatus::kNoResponse] = 1;
    }
    failed.store(!confirmed || status.PaperJam());
    return confirmed;
}

int32_t CPrinterEncoder::RecoverFromError()
{
    const int32_t result = Link().Write(traits.recovery == Recovery::kCan ? "\x18" : "\x10\x05\x02");
    if (result == kEncoderOk) torn_ = false;
    return result;
}

bool CPrinterEncoder::CheckPrinter()
{
    return IsExpectedPrinter(Link(), traits.identity, clock);
}

void CPrinterEncoder::InitialiseAtOpen()
{
    if (traits.asksWideMechanism && HasWideMechanism(Link(), clock)) rasterWidth = kWideRasterWidth;
    failed.store(true);
    if (Initialize() != kEncoderOk) return;
    clock.Sleep(kInitialisationPauseMilliseconds);
    if (!QueryErrorBit()) failed.store(false);
}

}  // namespace marbex::printer
