#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "comm/printer_port.h"
#include "platform/clock.h"
#include "printer/encoder_traits.h"
#include "printer/job_payloads.h"
#include "printer/printer_status.h"

namespace marbex::printer {

// Results of the encoder's own; they are not OPOS codes.
inline constexpr int32_t kEncoderOk = 0;
inline constexpr int32_t kEncoderTextNotSent = 1;
inline constexpr int32_t kEncoderPortNotOpen = 2;
inline constexpr int32_t kEncoderPortFailed = 3;
inline constexpr int32_t kEncoderOpenFailed = 5;

// The printer command object: the only place that writes the printer's command language and reads its status.
// Does not own the port. Transfers are serialised by the spooler's printer mutex; IsInError and RequestStop may be called
// from any thread. Virtual so that a test can stand in for a printer.
class CPrinterEncoder {
public:
    CPrinterEncoder(const EncoderTraits& traits, platform::Clock& clock);
    virtual ~CPrinterEncoder();
    CPrinterEncoder(const CPrinterEncoder&) = delete;
    CPrinterEncoder& operator=(const CPrinterEncoder&) = delete;

    virtual int32_t AttachPort(comm::CPrinterPort* port);
    virtual int32_t DetachPort();
    virtual int32_t Open();
    virtual void Close();
    virtual bool IsOpen() const;

    virtual int32_t PrintText(std::string_view text);  // NUL markers become 0x00
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
    // fullStatus, when given, receives the four full-status bytes as one number (first byte lowest).
    virtual int32_t GetStatus(PrinterStatus& status, bool askNearEnd, uint32_t* fullStatus = nullptr);
    virtual bool IsInError() const { return failed.load(); }  // the sticky communication-failure flag
    virtual int32_t RecoverFromError();
    virtual void ClearCutSent() { cutSent = false; }

    // Whether the printer at the other end is the model it should be (GS I); used once, while opening.
    virtual bool CheckPrinter();
    // What is sent and asked at opening: start-up bytes, initialisation, error bit. Sets or clears the failure flag.
    virtual void InitialiseAtOpen();

    // True ends a long wait for the printer (the end of a bitmap) at once, now and until false.
    void RequestStop(bool stop) { stopRequested.store(stop); }

protected:
    const EncoderTraits& traits;
    platform::Clock& clock;
    comm::CPrinterPort* port = nullptr;
    std::atomic<bool> failed{false};
    bool cutSent = false;
    std::atomic<bool> stopRequested{false};
};

}  // namespace marbex::printer
