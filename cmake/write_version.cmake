# cmake -D SOURCES=folder -D VERSION=1.2.3 -D OUTPUT=file -P write_version.cmake
set(commit "")
execute_process(
  COMMAND git describe --always --dirty --exclude=* --abbrev=12
  WORKING_DIRECTORY ${SOURCES}
  OUTPUT_VARIABLE commit
  OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)

file(CONFIGURE OUTPUT ${OUTPUT} CONTENT
"#pragma once

namespace marbex {

// The version of the packages this was built for.
inline constexpr char kPackageVersion[] = \"@VERSION@\";

// The commit it was built from, followed by \"-dirty\" when there were changes besides; empty outside a checkout.
inline constexpr char kCommit[] = \"@commit@\";

}  // namespace marbex
" @ONLY)
