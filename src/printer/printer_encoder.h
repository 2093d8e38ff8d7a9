#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "comm/printer_port.h"
#include "platform/clock.h"
#include "platform/lock.h"
#include "printer/encoder_traits.h"
#include "printer/job_payloads.h"
#include "printer/printer_link.h"
#include "printer/printer_status.h"

namespace marbex::printer {

// Where output to a printer begins.
struct OutputMark {
    uint32_t linkOpening = 0;  // the how-manieth of the port took its first byte
    uint64_t bytes = 0;        // handed to the link before it
};

// The printer command object: the only place that writes the printer's command language and reads its status.
//
// Does not own the port, which must live until it is detached. Operations return kEncoderOk or one of the small codes
// of printer_link.h, for most of them the result of their last write. Transfers are serialised by the spooler's printer
// mutex; IsInError and RequestStop may be called from any thread. Virtual so that a test can stand in for a printer.
class CPrinterEncoder {
public:
    CPrinterEncoder(const EncoderTraits& traits, platform::Clock& clock);
    virtual ~CPrinterEncoder();
    CPrinterEncoder(const CPrinterEncoder&) = delete;
    CPrinterEncoder& operator=(const CPrinterEncoder&) = delete;

    virtual int32_t AttachPort(comm::CPrinterPort* newPort);  // a null one is ignored
    virtual int32_t DetachPort();                             // closes it first
    // Opens the port, its second connection where the model has one, and sends the model's start-up bytes. 0 also when
    // it is open already or there is no port; kEncoderOpenFailed.
    virtual int32_t Open();
    virtual void Close();
    virtual bool IsOpen() const;

    // Each NUL marker is sent as 0x00. kEncoderTextNotSent, half a second later and with the failure flag set, when a
    // write fails, and, without a write, when the flag was set before.
    virtual int32_t PrintText(std::string_view text);
    virtual int32_t PrintBarcode(const BarcodeDataStruct& barcode);
    virtual int32_t PrintBitmap(const BitmapDataStruct& bitmap);
    virtual int32_t SendDirect(const DirectIODataStruct& direct);
    virtual int32_t SendDirectSecondary(const DirectIODataStruct& direct);  // over the port's second connection
    virtual int32_t Initialize();
    virtual int32_t CutPaper(int32_t percentage);
    virtual bool QueryErrorBit();
    virtual void CleanInput();
    virtual void CleanOutput();
    virtual void CleanBoth();

    // Asks the printer for its condition. 0, or 1 with the no-response flag and the failure flag set.
    // fullStatus, when given, receives the four full-status bytes as one number (first byte lowest), 0 when there was
    // no answer. A paper jam sets the failure flag too, with the result 0. No model uses askNearEnd.
    virtual int32_t GetStatus(PrinterStatus& status, bool askNearEnd, uint32_t* fullStatus = nullptr);
    // Asks the printer for its condition over the link that carried all since begin: the answer proves that the printer
    // has received it. False, with the no-response flag and the failure flag set, when there is no such answer in time
    // (the time for an answer and that for the bytes on their way, 60 s at most) or the link was opened anew since.
    // Discards nothing that is still on its way to the printer.
    virtual bool ConfirmReceipt(const OutputMark& begin, PrinterStatus& status);
    // What comes is output that is to be confirmed; and, after it, where it began.
    virtual void BeginOutput();
    virtual OutputMark OutputBegin() const;
    virtual bool IsInError() const { return failed.load(); }  // the sticky communication-failure flag
    virtual int32_t RecoverFromError();
    // The printer may have half a command, or half a line, that nothing will complete: the next job begins with the
    // recovery, as after any other failure, whatever the printer answers until then.
    virtual void NoteTornOutput() { torn_ = true; }
    virtual bool NeedsRecovery() const { return IsInError() || torn_; }
    virtual void ClearCutSent() { cutSent = false; }

    // Whether the printer at the other end is the model it should be (GS I); used once, while opening.
    virtual bool CheckPrinter();
    // What is asked and sent once the printer is known: its mechanism where there are two, initialisation, error bit.
    // Sets or clears the failure flag.
    virtual void InitialiseAtOpen();

    // True ends a long wait for the printer (the end of a bitmap) at once and makes the port impatient (CPrinterPort),
    // now and until false.
    void RequestStop(bool stop);

protected:
    PrinterLink Link() { return PrinterLink(port, &written_); }

    const EncoderTraits& traits;
    platform::Clock& clock;
    comm::CPrinterPort* port = nullptr;
    std::atomic<bool> failed{false};
    bool torn_ = false;
    bool cutSent = false;     // the next text is preceded by the after-cut sequence
    uint32_t rasterWidth;     // dots
    platform::Lock stopLock;  // so that a port that is being attached misses no request
    std::atomic<bool> stopRequested{false};

private:
    ReplyLimit LimitFor(uint64_t bytesOnTheirWay) const;
    uint32_t UnansweredQuestions();
    bool Ask(const PrinterLink& link, PrinterStatus& status, uint32_t& fullStatus);

    OutputCount written_;
    uint64_t bytesBefore_ = 0;  // those before the output that is to be confirmed
    // Status questions of this opening of the link that nobody answered in time. Their answers may still come, and
    // would be taken for the answer to a later one.
    uint32_t unanswered_ = 0;
    uint32_t openingOfUnanswered_ = 0;
};

}  // namespace marbex::printer
