#pragma once

// The names that the standard has for numbers, each set under the prefix of its constants.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "marbex_opos/opos/object_kind.h"

namespace marbex::tools {

// Prefixes of the sets that a number may come from ("OPOS_E_"); empty when the standard has no names for it.
using NameSets = std::vector<std::string_view>;

NameSets NamesOfResults();
NameSets NamesOfExtendedResults(ObjectKind object);
NameSets NamesOfStatusEvents(ObjectKind object);
NameSets NamesOfProperty(ObjectKind object, std::string_view property);  // without regard to case
NameSets NamesOfMethod(std::string_view method);                         // of what the method returns

// "102 (OPOS_E_CLAIMED)"; the bare number when no set has a name for it.
std::string Named(int32_t number, const NameSets& sets);

// "106 (OPOS_E_ILLEGAL)", "0 (OPOS_SUCCESS)", with an extended code "114 (OPOS_E_EXTENDED), 201
// (OPOS_EPTR_COVER_OPEN)": a receipt printer's result.
std::string ResultText(int32_t code, int32_t extended = 0);

// The constants of the sets, in the order of the standard's headers.
std::vector<std::string_view> ConstantsOf(const NameSets& sets);

}  // namespace marbex::tools
