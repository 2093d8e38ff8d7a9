# How this tree makes its targets.
#
# Every folder of src/ is one static library of the files in it. A library sees the headers of the folders it links and
# no others: its include root is a folder of the build tree that holds nothing but a link to its own sources, and roots
# travel along target_link_libraries. An include that points the wrong way does not compile.

find_package(Threads REQUIRED)

add_library(marbex_options INTERFACE)
target_compile_options(marbex_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror)
target_compile_options(marbex_options INTERFACE "$<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>")
# GCC 12 sees overlaps in std::string that cannot happen (https://gcc.gnu.org/PR105651); with optimisation only.
target_compile_options(marbex_options INTERFACE
    "$<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>")
target_link_libraries(marbex_options INTERFACE Threads::Threads)
if(MARBEX_SANITIZE)
  add_compile_options(-fsanitize=${MARBEX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${MARBEX_SANITIZE})
endif()

# include/opos and include/marbex
add_library(marbex_public_headers INTERFACE)
target_include_directories(marbex_public_headers INTERFACE ${CMAKE_SOURCE_DIR}/include)

# marbex_folder_library(name LINKS library... [ALSO subfolder...])
function(marbex_folder_library name)
  cmake_parse_arguments(ARG "" "" "LINKS;ALSO" ${ARGN})
  set(root ${CMAKE_BINARY_DIR}/include_roots/${name})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${name} SYMBOLIC)
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  foreach(folder IN LISTS ARG_ALSO)
    file(GLOB more CONFIGURE_DEPENDS ${folder}/*.cpp)
    list(APPEND sources ${more})
  endforeach()
  if(sources)
    add_library(marbex_${name} STATIC ${sources})
    target_include_directories(marbex_${name} PUBLIC ${root})
    target_link_libraries(marbex_${name} PUBLIC marbex_public_headers ${ARG_LINKS} PRIVATE marbex_options)
  else()
    add_library(marbex_${name} INTERFACE)
    target_include_directories(marbex_${name} INTERFACE ${root})
    target_link_libraries(marbex_${name} INTERFACE marbex_public_headers ${ARG_LINKS})
  endif()
endfunction()

# marbex_test_folder(name LINKS library... [TIMEOUT seconds])
#
# The test program of one folder of tests/: every *_test.cpp in it, each GoogleTest case registered with CTest.
function(marbex_test_folder name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "LINKS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} GTest::gtest GTest::gtest_main marbex_options)
  gtest_discover_tests(${name} TEST_PREFIX "${MARBEX_TEST_PREFIX}${name}." DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT ${ARG_TIMEOUT})
endfunction()
