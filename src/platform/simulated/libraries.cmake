# The machine itself, and what the systems have in common that are no Windows: pure code, which asks nobody anything.
file(GLOB machine CONFIGURE_DEPENDS simulated/machine/*.cpp posix/picture_*.cpp)
target_sources(marbex_platform PRIVATE
  ${machine} posix/ansi_code_page.cpp posix/bstr.cpp posix/code_pages.cpp posix/iconv_converter.cpp
  posix/variant.cpp posix/version.cpp)
include(posix/libraries.cmake)
