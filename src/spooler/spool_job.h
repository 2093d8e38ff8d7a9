#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <variant>

#include "printer/job_payloads.h"

namespace marbex::spooler {

using BarcodePayload = std::unique_ptr<printer::BarcodeDataStruct>;
using BitmapPayload = std::unique_ptr<printer::BitmapDataStruct>;
using DirectIOPayload = std::unique_ptr<printer::DirectIODataStruct>;
using JobPayload = std::variant<std::monostate, BarcodePayload, BitmapPayload, DirectIOPayload>;

// One piece of output on its way to the printer. Owned by the list that holds it and by the thread that executes it;
// a clear takes it out of the lists and marks it, and whoever is last frees it with its payload.
class CSpoolJob {
public:
    CSpoolJob(int32_t jobType, std::string jobText, JobPayload jobBuffer, uint32_t jobLength, uint32_t jobOutputId)
        : type(jobType),
          text(std::move(jobText)),
          buffer(std::move(jobBuffer)),
          length(jobLength),
          outputId(jobOutputId)
    {
    }
    virtual ~CSpoolJob() = default;
    CSpoolJob(const CSpoolJob&) = delete;
    CSpoolJob& operator=(const CSpoolJob&) = delete;

    const int32_t type;  // job type code in the model's numbering
    std::string text;    // print data, or the cut percentage in decimal
    const JobPayload buffer;
    const uint32_t length;    // of the payload, in bytes as the payload is told
    const uint32_t outputId;  // the output identifier counter when the job was made

    // The how-manieth queued job it is; set when it is queued.
    uint64_t sequence = 0;

    // Of a job that prints a transaction: what was collected, and which opening and number the transaction had; 0 when
    // none was open.
    std::deque<std::shared_ptr<CSpoolJob>> transaction;
    uint32_t transactionSerial = 0;
    uint32_t transactionNumber = 0;

    // Set by a clear: the current attempt is finished, no other is made.
    std::atomic<bool> cancelled{false};
};

}  // namespace marbex::spooler
