# libmarbexopos.so.1. Only the names of its export map can be seen.
set(export_map ${CMAKE_CURRENT_SOURCE_DIR}/posix/exports.map)
target_link_libraries(marbexopos PRIVATE marbex_server)
# -Bsymbolic: a program that has these functions too, linked in statically, does not take over ours.
target_link_options(marbexopos PRIVATE LINKER:--version-script=${export_map} LINKER:-Bsymbolic)
file(STRINGS ${export_map} names REGEX "^    [A-Za-z]+;$")
foreach(name IN LISTS names)
  string(REGEX MATCH "[A-Za-z]+" name "${name}")
  target_link_options(marbexopos PRIVATE LINKER:--undefined=${name})  # takes it out of its archive
endforeach()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${export_map})
set_target_properties(marbexopos PROPERTIES LINK_DEPENDS ${export_map} SOVERSION 1)
target_include_directories(marbexopos INTERFACE $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/include>
                                                $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_compile_features(marbexopos INTERFACE cxx_std_17)
