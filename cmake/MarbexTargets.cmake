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
if(WIN32)
  # Windows 7 is the oldest that tills still run.
  target_compile_definitions(marbex_options INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)
endif()
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

# marbex_version_resource(target)
#
# The version that the services tell, on Windows, is that of the module they are in.
if(WIN32)
  enable_language(RC)
endif()
function(marbex_version_resource target)
  if(WIN32 AND TARGET ${target})
    configure_file(${CMAKE_SOURCE_DIR}/cmake/version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/version.rc @ONLY)
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/version.rc)
  endif()
endfunction()

# marbex_test_folder(name LINKS library... [TIMEOUT seconds])
#
# The test program of one folder of tests/: every *_test.cpp in it and in its folder of the operating system, each
# GoogleTest case registered with CTest.
function(marbex_test_folder name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "LINKS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  file(GLOB sources CONFIGURE_DEPENDS *.cpp ${MARBEX_OS}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} marbex_test_os GTest::gtest GTest::gtest_main marbex_options)
  # The cases of a Windows program are asked for when they run: the build itself needs no Wine.
  if(WIN32)
    set(discovery PRE_TEST)
  else()
    set(discovery POST_BUILD)
  endif()
  # Up to GCC 13 and LLVM 16 the address sanitizer takes a thread's storage in a loaded library that lies 16 bytes into
  # a page for one of glibc 2.19's, reads its length from the words before it, and its leak check dies of the answer.
  set(environment "")
  if(MARBEX_SANITIZE MATCHES address)
    set(environment ENVIRONMENT_MODIFICATION ASAN_OPTIONS=path_list_append:intercept_tls_get_addr=0)
  endif()
  gtest_discover_tests(${name}
    TEST_PREFIX "${MARBEX_TEST_PREFIX}${name}."
    DISCOVERY_MODE ${discovery}
    DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT ${ARG_TIMEOUT} ${environment})
endfunction()
