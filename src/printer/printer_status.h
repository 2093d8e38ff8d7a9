#pragma once

#include <array>
#include <cstdint>

namespace marbex::printer {

// The condition of the printer as the last status query told it: twelve flags, 0 or 1, all 0 before a query.
struct PrinterStatus {
    static constexpr std::size_t kDrawerSignal = 0;
    static constexpr std::size_t kOnline = 1;
    static constexpr std::size_t kCoverOpen = 2;
    static constexpr std::size_t kPaperEnd = 4;
    static constexpr std::size_t kOffline = 5;
    static constexpr std::size_t kPaperNearEnd = 9;  // also set by paper end
    static constexpr std::size_t kNoResponse = 10;
    static constexpr std::size_t kPaperJam = 11;

    std::array<uint8_t, 12> flags{};

    bool CoverOpen() const { return flags[kCoverOpen] != 0; }
    bool PaperEnd() const { return flags[kPaperEnd] != 0; }
    bool PaperNearEnd() const { return flags[kPaperNearEnd] != 0; }
    bool NoResponse() const { return flags[kNoResponse] != 0; }
    bool PaperJam() const { return flags[kPaperJam] != 0; }

    friend bool operator==(const PrinterStatus&, const PrinterStatus&) = default;
};

}  // namespace marbex::printer
