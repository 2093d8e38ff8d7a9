# The FileVersion text, in the form of a Windows version resource.
set_source_files_properties(posix/version.cpp PROPERTIES COMPILE_DEFINITIONS
  "MARBEX_FILE_VERSION=\"${PROJECT_VERSION_MAJOR}, ${PROJECT_VERSION_MINOR}, ${PROJECT_VERSION_PATCH}, 0\"")

# The decoders of picture files.
find_package(JPEG REQUIRED)
find_package(GIF REQUIRED)
find_package(PNG REQUIRED)
target_link_libraries(marbex_platform PRIVATE JPEG::JPEG GIF::GIF PNG::PNG)
