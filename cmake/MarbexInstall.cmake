# What goes where on a machine. On Windows everything lies in one folder; elsewhere the library is the program's own
# business (applications find it by its registration), so it lies in a folder of its own.
if(WIN32)
  install(TARGETS marbexopos marbex-opos RUNTIME DESTINATION .)
else()
  install(TARGETS marbex-opos marbex-virtual-printer RUNTIME DESTINATION bin)
  install(TARGETS marbexopos LIBRARY DESTINATION lib/marbex-opos)
  install(DIRECTORY include/marbex include/opos DESTINATION include)
  foreach(section IN ITEMS 1 5 7)
    install(DIRECTORY docs/man/ DESTINATION share/man/man${section} FILES_MATCHING PATTERN "*.${section}")
  endforeach()
endif()
