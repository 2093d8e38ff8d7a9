# What this is a build of: the library marbex_version gives marbex_version.h, with the version of the packages and the
# commit. Looked at in every build, written when something has changed.

string(REPLACE "." "," MARBEX_PRODUCT_VERSION_NUMBERS ${MARBEX_PACKAGE_VERSION})

set(version_root ${CMAKE_BINARY_DIR}/include_roots/version)
add_custom_target(
  marbex_version_header
  COMMAND ${CMAKE_COMMAND} -D SOURCES=${CMAKE_SOURCE_DIR} -D VERSION=${MARBEX_PACKAGE_VERSION}
          -D OUTPUT=${version_root}/marbex_version.h -P ${CMAKE_SOURCE_DIR}/cmake/write_version.cmake
  BYPRODUCTS ${version_root}/marbex_version.h
  COMMENT ""
  VERBATIM)
add_library(marbex_version INTERFACE)
target_include_directories(marbex_version INTERFACE ${version_root})
add_dependencies(marbex_version marbex_version_header)
