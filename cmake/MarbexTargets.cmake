# How this tree makes its targets.
#
# Every folder of src/ is one static library. A library sees the headers of the folders it links and no others: its
# include root is a folder of the build tree that holds nothing but a link to its own sources, and roots travel along
# target_link_libraries. "#include "spooler/..." from src/comm does not compile.

find_package(Threads REQUIRED)

add_library(marbex_options INTERFACE)
target_compile_features(marbex_options INTERFACE cxx_std_20)
target_compile_options(marbex_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror)
target_compile_options(marbex_options INTERFACE "$<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>")
target_link_libraries(marbex_options INTERFACE Threads::Threads)
if(MARBEX_SANITIZE)
  add_compile_options(-fsanitize=${MARBEX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${MARBEX_SANITIZE})
endif()

# include/opos and include/marbex
add_library(marbex_public_headers INTERFACE)
target_include_directories(marbex_public_headers INTERFACE ${CMAKE_SOURCE_DIR}/include)

# marbex_folder_library(name SOURCES file... LINKS library...)
function(marbex_folder_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  set(root ${CMAKE_BINARY_DIR}/include_roots/${name})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${name} SYMBOLIC)
  add_library(marbex_${name} STATIC ${ARG_SOURCES})
  target_include_directories(marbex_${name} PUBLIC ${root})
  target_link_libraries(marbex_${name} PUBLIC marbex_public_headers ${ARG_LINKS} PRIVATE marbex_options)
endfunction()

# marbex_test(name SOURCES file... LINKS library... [TIMEOUT seconds])
#
# One test program of tests/, every GoogleTest case in it registered with CTest by its own name.
function(marbex_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINKS;LABELS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} GTest::gtest GTest::gtest_main marbex_options)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}")
endfunction()
