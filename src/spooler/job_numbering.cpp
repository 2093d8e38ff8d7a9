#include "spooler/job_numbering.h"

#include <array>

namespace marbex::spooler {

namespace {

struct Row {
    JobMeaning meaning;
    int32_t reference;
    int32_t second;
};

constexpr int32_t kNone = -1;

constexpr std::array kRows = {
    Row{JobMeaning::kNop, 0, 0},
    Row{JobMeaning::kPrintNormal, 1, 1},
    Row{JobMeaning::kCutPaper, 2, 3},
    Row{JobMeaning::kPrintBarcode, 4, 5},
    Row{JobMeaning::kDirectIO, 5, 7},
    Row{JobMeaning::kPrintBitmap, 6, 6},
    Row{JobMeaning::kPrintImmediate, 8, 9},
    Row{JobMeaning::kDirectIO2nd, kNone, 10},
    Row{JobMeaning::kPrintTransaction, 1000, 1000},
    Row{JobMeaning::kNotHandled, 3, 4},
    Row{JobMeaning::kNotHandled, 7, 8},
};

int32_t NumberIn(const Row& row, JobNumbering numbering)
{
    return numbering == JobNumbering::kReference ? row.reference : row.second;
}

}  // namespace

int32_t JobNumberOf(JobMeaning meaning, JobNumbering numbering)
{
    for (const Row& row : kRows) {
        if (row.meaning == meaning) return NumberIn(row, numbering);
    }
    return kNone;
}

JobMeaning JobMeaningOf(int32_t number, JobNumbering numbering)
{
    for (const Row& row : kRows) {
        if (number != kNone && NumberIn(row, numbering) == number) return row.meaning;
    }
    return JobMeaning::kNothing;
}

}  // namespace marbex::spooler
