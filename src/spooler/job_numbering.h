#pragma once

#include <cstdint>

namespace marbex::spooler {

// What a job does. Jobs are recorded and logged by the number that their model gives it.
enum class JobMeaning {
    kNop,
    kPrintNormal,
    kCutPaper,
    kPrintBarcode,
    kDirectIO,
    kDirectIO2nd,  // raw bytes over the second serial link
    kPrintBitmap,
    kPrintImmediate,
    kPrintTransaction,
    kNotHandled,  // a number the model knows and refuses
    kNothing,     // any other number
};

enum class JobNumbering : uint8_t {
    kReference,  // TALIS, TALIS ETHERNET, PELTO, SELVA, AMBRA
    kSecond,     // the other models
};

// The number of a job; -1 for a meaning that the numbering lacks.
int32_t JobNumberOf(JobMeaning meaning, JobNumbering numbering);

JobMeaning JobMeaningOf(int32_t number, JobNumbering numbering);

}  // namespace marbex::spooler
