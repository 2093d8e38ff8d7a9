#pragma once

// Reads the parts of one statement from left to right.

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "marbex_opos/opos/value.h"

namespace marbex::tools {

// Thrown inside the parser, caught by ParseStatement.
struct SyntaxProblem : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Scanner {
public:
    explicit Scanner(std::string_view line) : rest_(line) {}

    bool AtEnd();                          // after blanks
    bool Take(std::string_view symbol);    // the symbol, after blanks, if it is there
    bool TakeWord(std::string_view word);  // the same for a word, in any case
    void Need(std::string_view symbol);
    void NeedEnd();
    std::string_view Name();  // a letter or "_", then letters, digits and "_"; empty when there is none
    Value TakeValue();        // number, constant, several joined by "|", true, false, or text
    Result TakeResult();      // a value, or null
    int32_t TakeMilliseconds();
    [[noreturn]] void Fail() const;  // "unexpected ..." with what stands there

private:
    void SkipBlanks();
    std::u16string TakeText();
    char16_t TakeEscape();
    char16_t TakeHex(std::size_t digits);
    int32_t TakeNumber();
    int32_t TakeTerm();

    std::string_view rest_;
};

}  // namespace marbex::tools
