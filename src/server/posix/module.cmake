# libmarbexopos.so. Only these names can be seen.
set(exports
  DllGetClassObject DllCanUnloadNow DllRegisterServer DllUnregisterServer
  SysAllocString SysAllocStringLen SysFreeString SysStringLen SysStringByteLen
  VariantInit VariantClear VariantChangeType
  MarbexMessageDescriptor MarbexRunMessages)

list(JOIN exports "; " names)
file(CONFIGURE OUTPUT exports.map CONTENT "{ global: @names@; local: *; };\n" @ONLY)
target_link_libraries(marbexopos PRIVATE marbex_server)
# -Bsymbolic: a program that has these functions too, linked in statically, does not take over ours.
target_link_options(marbexopos PRIVATE LINKER:--version-script=${CMAKE_CURRENT_BINARY_DIR}/exports.map LINKER:-Bsymbolic)
foreach(name IN LISTS exports)
  target_link_options(marbexopos PRIVATE LINKER:--undefined=${name})  # takes it out of its archive
endforeach()
set_target_properties(marbexopos PROPERTIES LINK_DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/exports.map)
