# What a server exports on this system besides the entry points; they come from the platform layer.
foreach(name IN ITEMS MarbexMessageDescriptor MarbexRunMessages)
  target_link_options(fake_server PRIVATE LINKER:--undefined=${name})
endforeach()
target_link_options(fake_server PRIVATE LINKER:-Bsymbolic)

# And a printer at the end of the road.
target_link_libraries(tools_test PRIVATE marbex_virtual_printer)
