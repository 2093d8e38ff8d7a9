# Compiling the standard library's headers once instead of in every file: halves a build from nothing. Off where it
# matters that every file names what it uses, and where ccache does better.

set(precompiled_headers
    <algorithm> <array> <atomic> <charconv> <chrono> <cstdint> <cstring> <deque> <filesystem> <functional> <list> <map>
    <memory> <mutex> <optional> <span> <string> <string_view> <thread> <variant> <vector>)
set(precompiled_folder ${CMAKE_BINARY_DIR}/precompiled)
file(CONFIGURE OUTPUT ${precompiled_folder}/library.cpp CONTENT "// Carries the precompiled headers.\n")
file(CONFIGURE OUTPUT ${precompiled_folder}/program.cpp CONTENT "int main()\n{\n}\n")

# GCC 12 takes the standard library's own code for ours once it is precompiled, and sees overflows in std::string that
# cannot happen (https://gcc.gnu.org/PR105329). The everyday build has these warnings.
target_compile_options(marbex_options INTERFACE
    "$<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-stringop-overflow;-Wno-stringop-overread>")

add_library(marbex_precompiled_library STATIC ${precompiled_folder}/library.cpp)
target_link_libraries(marbex_precompiled_library PRIVATE marbex_options)
target_precompile_headers(marbex_precompiled_library PRIVATE ${precompiled_headers})

# Programs are compiled for another place in memory than libraries, so theirs are others.
if(MARBEX_BUILD_TESTS)
  find_package(GTest REQUIRED)
  add_executable(marbex_precompiled_tests ${precompiled_folder}/program.cpp)
  target_link_libraries(marbex_precompiled_tests PRIVATE GTest::gtest marbex_options)
  target_precompile_headers(marbex_precompiled_tests PRIVATE ${precompiled_headers} <gtest/gtest.h>)
endif()

# Every library of ours, and every test program, of a folder and those below it.
function(marbex_precompile_folder folder)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(kind ${target} TYPE)
    if(kind STREQUAL "STATIC_LIBRARY")
      target_precompile_headers(${target} REUSE_FROM marbex_precompiled_library)
    elseif(kind STREQUAL "EXECUTABLE" AND target MATCHES "_test$")
      target_precompile_headers(${target} REUSE_FROM marbex_precompiled_tests)
    endif()
  endforeach()
  get_property(below DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(subfolder IN LISTS below)
    marbex_precompile_folder(${subfolder})
  endforeach()
endfunction()
foreach(folder IN ITEMS src tools tests)
  if(IS_DIRECTORY ${CMAKE_BINARY_DIR}/${folder})
    marbex_precompile_folder(${CMAKE_SOURCE_DIR}/${folder})
  endif()
endforeach()
