# What makes a mistake in memory an end instead of a way in, in the programs that are handed out: checked library calls
# and stack frames, addresses at random, and tables of the loader that nobody can write after the start.
# scripts/lib/hardening.sh looks for all of it in the files.

include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

if(NOT CMAKE_BUILD_TYPE STREQUAL Release)
  return()
endif()
add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong)
if(WIN32)
  # So the compiler links what the checks call.
  add_link_options(-fstack-protector-strong LINKER:--dynamicbase LINKER:--nxcompat)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    add_link_options(LINKER:--high-entropy-va)
  endif()
else()
  add_compile_options(-fstack-clash-protection)
  add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    add_compile_options(-fcf-protection)
  endif()
endif()
