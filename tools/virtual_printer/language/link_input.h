#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

#include "virtual_printer/language/command_reader.h"

namespace marbex::virtual_printer {

// Receives the bytes of the link: picks out the real-time requests (DLE EOT n, DLE ENQ 2), which are not part of the
// stream of commands, and hands everything else to the command reader.
//
// Inside the data of barcodes and raster rows they are data, except in a command that the printer's stop has cut short.
class LinkInput {
public:
    struct Outlets {
        std::function<void(const Command&)> command;
        std::function<void(uint8_t kind)> statusRequest;  // DLE EOT kind
        // These two forget the command that is coming in, as many bytes of it as there were.
        std::function<void(int bytes)> recoverRequest;  // DLE ENQ 2
        std::function<void(int bytes)> givenUp;         // CAN inside a command cut short
        std::function<bool()> stopped;
    };
    explicit LinkInput(Outlets outlets);

    void Put(uint8_t byte);
    void Stopped();  // the printer has just stopped
    std::size_t Pending() const { return reader_.Pending() + held_.size(); }
    uint64_t Begin() const { return reader_.Begin(); }  // where in the stream the pending bytes begin
    Bytes Abandon();                                    // forgets unfinished bytes

private:
    void Match();
    void Release(uint8_t byte);
    bool CutShort() const;

    Outlets outlets_;
    CommandReader reader_;
    Bytes held_;                // may turn out to be a real-time request
    bool interrupted_ = false;  // the printer stopped while the current command came in
};

}  // namespace marbex::virtual_printer
