# MarbexOpos.dll. The entry points are exported under their plain names, also where stdcall decorates them; nothing else
# can be seen.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(export_table windows/MarbexOpos-x86.def)
else()
  set(export_table windows/MarbexOpos-x64.def)
endif()
target_sources(marbexopos PRIVATE ${export_table})
marbex_version_resource(marbexopos)
# Whole: nothing else refers to the entry points.
target_link_libraries(marbexopos PRIVATE $<LINK_LIBRARY:WHOLE_ARCHIVE,marbex_server>)
set_target_properties(marbexopos PROPERTIES PREFIX "" OUTPUT_NAME MarbexOpos)
