#pragma once

#include <cstdint>

namespace marbex::comm {

// Which of a link's connections carried what: a link that is lost and found again is opened anew under its user.
class LinkUse {
public:
    void Opened() { ++openings_; }
    void WriteBegins()
    {
        bytesWritten_ = 0;
        openingOfWrite_ = openings_;
    }
    void Took(uint32_t bytes)
    {
        if (bytesWritten_ == 0) openingOfWrite_ = openings_;
        bytesWritten_ += bytes;
    }

    uint32_t Openings() const { return openings_; }              // successful ones, those of a lost link included
    uint32_t BytesWritten() const { return bytesWritten_; }      // by the last write
    uint32_t OpeningOfWrite() const { return openingOfWrite_; }  // which one took the last write's first byte

private:
    uint32_t openings_ = 0;
    uint32_t bytesWritten_ = 0;
    uint32_t openingOfWrite_ = 0;
};

}  // namespace marbex::comm
