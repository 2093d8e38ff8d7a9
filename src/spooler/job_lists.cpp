// The three job lists: filling, clearing, and the transaction. hMutexQueue guards them all, and the list of records
// that are being executed, which a clear marks so that they are not attempted again.

#include "opos/common.h"
#include "spooler/print_spooler.h"
#include "support/service_log.h"

namespace marbex::spooler {

using platform::MutexHold;
using support::LogWrite;

namespace {

// The process draws its transaction numbers from one counter; 0 means that none is open.
std::atomic<uint32_t> transactionCounter{0};

uint32_t NextTransactionNumber()
{
    uint32_t number = ++transactionCounter;
    while (number == 0)
        number = ++transactionCounter;
    return number;
}

}  // namespace

bool CPrintSpooler::IsQueueEmpty()
{
    LogWrite("[%s] --- IsQueueEmpty Begin", traits.tag);
    bool empty = false;
    {
        MutexHold hold(*hMutexQueue);
        empty = asyncList.empty();
    }
    LogWrite("[%s] --- IsQueueEmpty End", traits.tag);
    return empty;
}

void CPrintSpooler::Enqueue(std::shared_ptr<CSpoolJob> job)
{
    {
        MutexHold hold(*hMutexQueue);
        job->sequence = ++queuedJobs_;
        asyncList.push_back(std::move(job));
    }
    DataInQueue->Set();
}

int32_t CPrintSpooler::Clear()
{
    LogWrite("[%s] --- Clear Begin", traits.tag);
    {
        // In one step: a job that goes from one list to another must not slip through between them.
        MutexHold hold(*hMutexQueue);
        CancelExecuting();
        ClearInProgressList();
        ClearAsyncList();
        ClearTransactionList();
        ClearTransaction();
    }
    LogWrite("[%s] --- Clear End", traits.tag);
    return 0;
}

void CPrintSpooler::CancelExecuting()
{
    for (CSpoolJob* job : executing_)
        job->cancelled = true;
    pauseEnded_->Set();
}

void CPrintSpooler::ClearInProgressList(ClearLimit limit)
{
    LogWrite("[%s] --- ClearInProgressList Begin", traits.tag);
    JobList removed;
    {
        MutexHold hold(*hMutexQueue);
        while (!inProgressList.empty() && inProgressList.front()->sequence <= limit.queuedJob) {
            inProgressList.front()->cancelled = true;
            removed.push_back(std::move(inProgressList.front()));
            inProgressList.pop_front();
        }
    }
    removed.clear();
    LogWrite("[%s] --- ClearInProgressList End", traits.tag);
}

void CPrintSpooler::NoteAnswer(int32_t answer)
{
    JobList removed;
    MutexHold hold(*hMutexQueue);
    if (answer == opos::OPOS_ER_CLEAR) {
        // Text that comes next must find no transaction that is doomed.
        removed.swap(transactionList);
        transactionNumber = 0;
    }
    answeredAt_ = ClearLimit{queuedJobs_, transactionSerial_};
}

void CPrintSpooler::ClearAsyncList(ClearLimit limit)
{
    LogWrite("[%s] --- ClearAsyncList Begin", traits.tag);
    JobList removed;
    {
        MutexHold hold(*hMutexQueue);
        while (!asyncList.empty() && asyncList.front()->sequence <= limit.queuedJob) {
            removed.push_back(std::move(asyncList.front()));
            asyncList.pop_front();
        }
    }
    removed.clear();
    LogWrite("[%s] --- ClearAsyncList End", traits.tag);
}

void CPrintSpooler::ClearTransactionList(ClearLimit limit)
{
    LogWrite("[%s] --- ClearTransactionList Begin", traits.tag);
    JobList removed;
    {
        MutexHold hold(*hMutexQueue);
        if (transactionSerial_ <= limit.transaction) removed.swap(transactionList);
    }
    removed.clear();
    LogWrite("[%s] --- ClearTransactionList End", traits.tag);
}

int32_t CPrintSpooler::BeginTransaction()
{
    LogWrite("[%s] --- BeginTransaction Begin", traits.tag);
    {
        MutexHold hold(*hMutexQueue);
        if (transactionNumber.load() == 0) ++transactionSerial_;
        transactionNumber = NextTransactionNumber();
    }
    LogWrite("[%s] --- BeginTransaction End", traits.tag);
    return 0;
}

int32_t CPrintSpooler::ClearTransaction()
{
    ClearTransactionUpTo(kEverything);
    return 0;
}

void CPrintSpooler::ClearTransactionUpTo(ClearLimit limit)
{
    LogWrite("[%s] --- ClearTransaction Begin", traits.tag);
    {
        MutexHold hold(*hMutexQueue);  // nothing joins a transaction that is being closed
        ClearTransactionList(limit);
        if (transactionSerial_ <= limit.transaction) transactionNumber = 0;
    }
    LogWrite("[%s] --- ClearTransaction End", traits.tag);
}

bool CPrintSpooler::JoinTransaction(std::shared_ptr<CSpoolJob>& job)
{
    MutexHold hold(*hMutexQueue);
    // The spool thread may have taken the transaction since the caller looked.
    if (transactionNumber.load() == 0) return false;
    LogWrite("[%s] --- AddJob Transaction IN PROGRESS...", traits.tag);
    const int32_t normal = Number(JobMeaning::kPrintNormal);
    if (!transactionList.empty() && transactionList.back()->type == normal && job->type == normal) {
        LogWrite("[%s] --- AddJob Transaction IN PROGRESS Chain Together Data", traits.tag);
        transactionList.back()->text += job->text;
        job.reset();
    } else {
        LogWrite("[%s] --- AddJob Transaction IN PROGRESS PUT in Queue", traits.tag);
        transactionList.push_back(std::move(job));
    }
    return true;
}

// The list is taken whole and the transaction closed in one step: what comes later is queued on its own and cannot
// vanish in a record that has been printed already.
void CPrintSpooler::TakeTransaction(CSpoolJob& transactionJob)
{
    if (transactionNumber.load() == 0) return;
    transactionJob.transaction.swap(transactionList);
    transactionJob.transactionSerial = transactionSerial_;
    transactionJob.transactionNumber = transactionNumber.exchange(0);
}

// What was refused before it was tried stays collected, so that the application can print it when the printer is free.
// False when it has been cleared, or another transaction has been begun, meanwhile.
bool CPrintSpooler::PutTransactionBack(CSpoolJob& transactionJob)
{
    MutexHold hold(*hMutexQueue);
    if (transactionNumber.load() != 0 || transactionJob.transactionSerial != transactionSerial_ ||
        transactionJob.cancelled.load()) {
        return false;
    }
    transactionList.swap(transactionJob.transaction);
    transactionNumber = transactionJob.transactionNumber;
    LogWrite("[%s] --- DoPrintTransaction Printer not available, transaction kept", traits.tag);
    return true;
}

void CPrintSpooler::DropWhatIsLeft()
{
    bool inProgress = false;
    bool queued = false;
    bool collected = false;
    {
        MutexHold hold(*hMutexQueue);
        inProgress = !inProgressList.empty();
        queued = !asyncList.empty();
        collected = !transactionList.empty();
    }
    if (inProgress || queued) droppedOutput_ = true;
    // Only where something is dropped, so that the log says so.
    if (inProgress) ClearInProgressList();
    if (queued) ClearAsyncList();
    if (collected) ClearTransactionList();
}

bool CPrintSpooler::MoveHeadToInProgress()
{
    MutexHold hold(*hMutexQueue);
    if (asyncList.empty()) return false;
    inProgressList.push_back(std::move(asyncList.front()));
    asyncList.pop_front();
    return true;
}

std::shared_ptr<CSpoolJob> CPrintSpooler::HeadInProgress()
{
    MutexHold hold(*hMutexQueue);
    return inProgressList.empty() ? nullptr : inProgressList.front();
}

void CPrintSpooler::RemoveFromInProgress(const CSpoolJob& job)
{
    MutexHold hold(*hMutexQueue);
    if (!inProgressList.empty() && inProgressList.front().get() == &job) inProgressList.pop_front();
}

}  // namespace marbex::spooler
