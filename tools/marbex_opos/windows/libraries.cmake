# These libraries are headers only, but where Debian puts them the headers of Linux are too: a copy of our own.
find_path(CLI11_INCLUDE CLI/CLI.hpp PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(JSON_INCLUDE nlohmann/json.hpp PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
set(private_include ${CMAKE_BINARY_DIR}/private_include)
file(COPY ${CLI11_INCLUDE}/CLI ${JSON_INCLUDE}/nlohmann DESTINATION ${private_include})
target_include_directories(marbex-opos SYSTEM PRIVATE ${private_include})
target_include_directories(marbex_opos_tool SYSTEM PRIVATE ${private_include})
target_link_libraries(marbex_opos_tool PRIVATE iphlpapi ws2_32)

enable_language(RC)
configure_file(windows/program.rc.in ${CMAKE_CURRENT_BINARY_DIR}/program.rc @ONLY)
target_sources(marbex-opos PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/program.rc)
set_property(SOURCE ${CMAKE_CURRENT_BINARY_DIR}/program.rc APPEND PROPERTY OBJECT_DEPENDS
  ${CMAKE_CURRENT_SOURCE_DIR}/windows/program.manifest)
