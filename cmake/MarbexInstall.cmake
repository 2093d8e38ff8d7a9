# What goes where on a machine. On Windows everything lies in one folder.
if(WIN32)
  install(TARGETS marbexopos marbex-opos RUNTIME DESTINATION .)
  return()
endif()

install(TARGETS marbex-opos marbex-virtual-printer RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
foreach(section IN ITEMS 1 5 7)
  install(DIRECTORY docs/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} FILES_MATCHING PATTERN "*.${section}")
endforeach()

install(FILES packaging/bash-completion/marbex-opos DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)

# The library is linked to as any other. Control objects find it by its registration, whose path is to stay the same;
# the tools look for it beside themselves, in a folder of ours.
install(TARGETS marbexopos EXPORT MarbexOpos LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/marbex include/opos DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
file(RELATIVE_PATH library_from_ours /lib/marbex-opos /${CMAKE_INSTALL_LIBDIR}/libmarbexopos.so.1)
file(CREATE_LINK ${library_from_ours} ${CMAKE_BINARY_DIR}/libmarbexopos.so SYMBOLIC)
install(FILES ${CMAKE_BINARY_DIR}/libmarbexopos.so DESTINATION lib/marbex-opos)

# pkg-config marbex-opos, and find_package(MarbexOpos), which gives the target MarbexOpos::marbexopos.
file(RELATIVE_PATH MARBEX_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" MARBEX_PREFIX_FROM_PC "${MARBEX_PREFIX_FROM_PC}")
configure_file(cmake/marbex-opos.pc.in ${CMAKE_BINARY_DIR}/marbex-opos.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/marbex-opos.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/MarbexOpos)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/MarbexOposConfigVersion.cmake
                                 VERSION ${MARBEX_PACKAGE_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/MarbexOposConfigVersion.cmake DESTINATION ${package_folder})
install(EXPORT MarbexOpos NAMESPACE MarbexOpos:: FILE MarbexOposConfig.cmake DESTINATION ${package_folder})
