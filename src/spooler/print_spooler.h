#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/kernel.h"
#include "platform/lock.h"
#include "printer/barcode_engine.h"
#include "printer/printer_encoder.h"
#include "printer/printer_status.h"
#include "spooler/application_thread.h"
#include "spooler/job_numbering.h"
#include "spooler/spool_job.h"

namespace marbex::spooler {

// What the spooler tells the device.
inline constexpr int32_t CB_PRINTERROR = 0;     // argument1: const PrinterStatus*, argument2: output identifier
inline constexpr int32_t CB_STATUSCHANGE = 1;   // argument1: const PrinterStatus*, argument2: full status or 0
inline constexpr int32_t CB_BEGINPRINTJOB = 2;  // argument2: output identifier
inline constexpr int32_t CB_JOBCOMPLETE = 3;    // argument2: output identifier
inline constexpr int32_t CB_IDLE = 4;

// Results: 0, kBusy, or an OPOS result code in the low and its extended code in the high 16 bits.
inline constexpr int32_t kBusy = -1;
inline constexpr int32_t kCoverOpenResult = 0x00C90072;   // 114 with 201
inline constexpr int32_t kPaperEmptyResult = 0x00CB0072;  // 114 with 203

// Option bit of Open: a failed status query counts as a printer error.
inline constexpr uint32_t kOptionSignalFailedQuery = 0x2;

// What differs between the spoolers of the models; the tag is the class name that the log shows.
struct SpoolerTraits {
    const char* tag = "CPrintSpoolerTalis";
    JobNumbering numbering = JobNumbering::kReference;
    bool textHasModePrefix = false;  // ESC "!" n in front of every text
    bool logsCastWidth = true;       // of a barcode
    bool reportsFullStatus = false;  // CB_STATUSCHANGE carries the four full-status bytes
};

// The print spooler of one device: takes validated output and prints it at once on the caller's thread (synchronous
// mode), on its own spool thread (asynchronous mode) or collected as one transaction, and watches the printer when it
// is idle.
//
// Any thread may call it; a second AddJob at the same time is refused with kBusy. Lock order: hSyncSemaphore,
// hMutexPrinter, hMutexQueue. The four kernel objects are made with the spooler and live as long, so that a late call
// from another thread meets an object and not a freed handle. Who waits for whom, and why it always ends, stands in
// spool_thread.cpp.
class CPrintSpooler {
public:
    using Callback = int32_t (*)(void* context, int32_t code, intptr_t argument1, intptr_t argument2);

    CPrintSpooler(const SpoolerTraits& traits, platform::Clock& clock, ApplicationThread& application);
    virtual ~CPrintSpooler();
    CPrintSpooler(const CPrintSpooler&) = delete;
    CPrintSpooler& operator=(const CPrintSpooler&) = delete;

    virtual int32_t Open(uint32_t options);  // -1 when no thread can be had; closes first when open
    virtual int32_t Close();  // prints what was queued before, then ends the thread; every list is emptied
    virtual int32_t SetCallback(Callback fn, void* context);
    virtual int32_t RemoveCallback();
    virtual int32_t AttachPrinter(printer::CPrinterEncoder* encoder);
    virtual int32_t DetachPrinter();
    virtual int32_t SetAsyncMode();
    virtual int32_t SetSyncMode();
    virtual int32_t Clear();
    virtual int32_t BeginTransaction();
    virtual int32_t ClearTransaction();
    virtual int32_t PrintTransaction();
    virtual bool IsQueueEmpty();
    virtual int32_t PrintImmediate(const std::string& data);
    // outputId, when given, receives the identifier of the job.
    virtual int32_t PrintNormal(const std::string& data, std::atomic<int32_t>* outputId);
    virtual int32_t CutPaper(int32_t percentage, std::atomic<int32_t>* outputId);
    // 106 for what cannot be printed, 109 for a picture that cannot be loaded; the sizes are in dots.
    virtual int32_t PrintBarCode(int32_t station, const std::string& data, int32_t symbology, int32_t height,
                                 int32_t width, int32_t alignment, int32_t textPosition,
                                 std::atomic<int32_t>* outputId);
    virtual int32_t PrintBitmap(int32_t station, const std::string& fileName, int32_t width, int32_t alignment,
                                int32_t rotation, std::atomic<int32_t>* outputId);
    virtual int32_t DirectIO(DirectIOPayload buffer, std::atomic<int32_t>* outputId);
    virtual int32_t DirectIO2nd(DirectIOPayload buffer, std::atomic<int32_t>* outputId);
    virtual int32_t AddJob(int32_t type, JobPayload buffer, uint32_t length, std::atomic<int32_t>* outputId);
    virtual int32_t AddJob(int32_t type, const std::string& text, std::atomic<int32_t>* outputId);
    virtual int32_t DoJob(CSpoolJob& job, bool* retry);
    virtual int32_t DoPrintTransaction(CSpoolJob& transactionJob);
    virtual int32_t DoCheckPrinterStatus(bool force);

    // Pending print modes, taken by the next text of the models whose texts have a mode prefix.
    int32_t SetBold(bool flag);
    int32_t SetDoubleWidth(bool flag);
    int32_t SetItalic(bool flag);
    int32_t SetDoubleHeight(bool flag);
    int32_t SetUnderlined(bool flag);
    int32_t ClearCutSent();

    int32_t GetInactivityTime();  // whole seconds since the end of the last job or immediate print

    bool RunsOnSpoolThread() const { return spoolThreadId_.load() == platform::CurrentThreadId(); }
    // Whether the CB_PRINTERROR under way comes from status polling, not from a job; for the callback only.
    bool ReportsPolling() const { return polling_.load() && RunsOnSpoolThread(); }

    // The application has just answered the error event of a job. What is queued, or begun as a transaction, from now
    // on is not meant by a CLEAR, although the thread that asked may act on it a moment later.
    void NoteAnswer(int32_t answer);

    // Whether a job counts as done only when the printer has told, over the link that carried all of it, that it is
    // there. Off after Open.
    void ConfirmOutput(bool on) { confirmsOutput_ = on; }

    // The device is about to close: jobs are refused from now on, pauses end.
    void BeginClosing();
    // After Close: whether it gave up output that had been queued.
    bool DroppedOutput() const { return droppedOutput_.load(); }

private:
    using JobList = std::deque<std::shared_ptr<CSpoolJob>>;

    int32_t InvokeCallback(int32_t code, intptr_t argument1, intptr_t argument2);
    int32_t Number(JobMeaning meaning) const { return JobNumberOf(meaning, traits.numbering); }
    std::string WithModePrefix(const std::string& data);
    bool IsReady() const { return opened.load() && !closing.load(); }

    int32_t RefuseAsBusy();
    int32_t Admit(int32_t type, const std::string& text, JobPayload buffer, uint32_t length,
                  std::atomic<int32_t>* outputId);
    int32_t RunImmediate(const CSpoolJob& job);
    int32_t RunSynchronously(CSpoolJob& job);
    int32_t RunTransaction(CSpoolJob& job);
    bool JoinTransaction(std::shared_ptr<CSpoolJob>& job);
    void Enqueue(std::shared_ptr<CSpoolJob> job);

    bool AcquirePrinter();
    void ReleasePrinter() MARBEX_NO_THREAD_SAFETY_ANALYSIS;  // taken through ApplicationThread, unseen by the analysis
    // The printer, from AcquirePrinter to the end of a scope.
    class HeldPrinter {
    public:
        explicit HeldPrinter(CPrintSpooler& spooler) : spooler_(spooler) {}
        ~HeldPrinter() { spooler_.ReleasePrinter(); }
        HeldPrinter(const HeldPrinter&) = delete;
        HeldPrinter& operator=(const HeldPrinter&) = delete;

    private:
        CPrintSpooler& spooler_;
    };
    class Execution;
    // A pass over a transaction: when its first byte went out, and whether what comes is its last job.
    struct Pass {
        std::optional<printer::OutputMark> begin;
        bool last = false;
    };
    int32_t DoAcquiredJob(Pass* pass, CSpoolJob& job, bool* retry);
    int32_t Attempt(Pass* pass, CSpoolJob& job, bool* retry);
    bool IsToBeConfirmed(const Pass* pass, const CSpoolJob& job) const;
    enum class Trouble : uint8_t;
    Trouble SendInMemory(const CSpoolJob& job, printer::OutputMark& begin, printer::PrinterStatus& status,
                         int32_t& result);
    Trouble Send(const CSpoolJob& job, printer::OutputMark& begin, printer::PrinterStatus& status, int32_t& result);
    Trouble Confirm(const printer::OutputMark& begin, printer::PrinterStatus& status, int32_t& result);
    int32_t Execute(const CSpoolJob& job);
    int32_t ExecuteInMemory(const CSpoolJob& job);
    bool AskWhetherToRetry(CSpoolJob& job, const printer::PrinterStatus& status, int32_t result);
    void PauseBeforeRetry(const CSpoolJob& job);
    void TakeTransaction(CSpoolJob& transactionJob) MARBEX_REQUIRES(*hMutexQueue);
    bool PutTransactionBack(CSpoolJob& transactionJob);
    int32_t PrintPass(const CSpoolJob& transactionJob, bool& answerRetry);
    int32_t PrintAsOne(CSpoolJob& transactionJob);

    // How far a clear goes: the last queued job and the last opening of a transaction that it means.
    struct ClearLimit {
        uint64_t queuedJob;
        uint32_t transaction;
    };
    static constexpr ClearLimit kEverything{UINT64_MAX, UINT32_MAX};
    static constexpr ClearLimit kNothing{0, 0};

    void ClearInProgressList(ClearLimit limit = kEverything);
    void ClearAsyncList(ClearLimit limit = kEverything);
    void ClearTransactionList(ClearLimit limit = kEverything);
    void ClearTransactionUpTo(ClearLimit limit);
    void CancelExecuting() MARBEX_REQUIRES(*hMutexQueue);
    void DropWhatIsLeft();

    void ThreadSpool();
    bool MoveHeadToInProgress();
    std::shared_ptr<CSpoolJob> HeadInProgress();
    void RemoveFromInProgress(const CSpoolJob& job);
    void Drain();
    void RunQueued(CSpoolJob& job);
    void RunQueuedInMemory(CSpoolJob& job);
    void CheckPrinterInMemory(bool force);

    const SpoolerTraits& traits;
    platform::Clock& clock;
    ApplicationThread& application;

    const std::unique_ptr<platform::Event> DataInQueue;
    const std::unique_ptr<platform::Mutex> hMutexPrinter;
    const std::unique_ptr<platform::Mutex> hMutexQueue;
    const std::unique_ptr<platform::Semaphore> hSyncSemaphore;
    const std::unique_ptr<platform::Event>
        printerAttached_;                                // manual: the thread's first query waits for it, or for Close
    const std::unique_ptr<platform::Event> pauseEnded_;  // manual: ends the pause before a repeated attempt

    JobList asyncList MARBEX_GUARDED_BY(*hMutexQueue);
    JobList transactionList MARBEX_GUARDED_BY(*hMutexQueue);
    JobList inProgressList MARBEX_GUARDED_BY(*hMutexQueue);
    std::vector<CSpoolJob*> executing_ MARBEX_GUARDED_BY(*hMutexQueue);

    uint64_t queuedJobs_ MARBEX_GUARDED_BY(*hMutexQueue) = 0;
    std::optional<ClearLimit> answeredAt_ MARBEX_GUARDED_BY(*hMutexQueue);  // of the error that is out

    std::unique_ptr<platform::Thread> thread;
    std::atomic<platform::ThreadId> spoolThreadId_{0};
    std::atomic<bool> polling_{false};
    std::atomic<uint32_t> asyncMode{1};
    std::atomic<bool> terminateRequest{false};
    std::atomic<bool> opened{false};
    std::atomic<bool> closing{false};
    std::atomic<bool> confirmsOutput_{false};
    std::atomic<bool> droppedOutput_{false};
    std::atomic<uint32_t> transactionNumber{0};
    uint32_t transactionSerial_ MARBEX_GUARDED_BY(*hMutexQueue) = 0;  // counts openings from closed
    std::atomic<Callback> callback{nullptr};
    std::atomic<void*> callbackContext{nullptr};
    std::atomic<printer::CPrinterEncoder*> printer{nullptr};
    uint32_t outputIdCounter = 1;  // guarded by hSyncSemaphore
    printer::PrinterStatus lastStatus;
    std::atomic<int64_t> lastActivityTime;
    std::atomic<int64_t> lastNearEndQueryTime;
    std::atomic<uint32_t> options{0};
    std::atomic<uint8_t> pendingModes_{0};

    // One engine a spooler, used by one request at a time.
    platform::Lock barcodeLock_;
    printer::BarcodeEngine barcodeEngine_ MARBEX_GUARDED_BY(barcodeLock_);
};

}  // namespace marbex::spooler
