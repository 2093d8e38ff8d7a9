#include <cstdio>

#include "marbex_opos/output.h"

namespace marbex::tools {

namespace {

// Through the C library's streams: the line editor writes to them too.
void Write(std::FILE* stream, std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

}  // namespace

void Print(std::string_view text)
{
    Write(stdout, text);
}

void PrintError(std::string_view text)
{
    Write(stderr, text);
}

}  // namespace marbex::tools
