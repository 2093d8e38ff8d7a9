# Cross-builds for Windows with MinGW-w64's compilers of the POSIX thread model. The file of an architecture sets
# MARBEX_WINDOWS_TARGET and includes this one.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${MARBEX_WINDOWS_TARGET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${MARBEX_WINDOWS_TARGET}-g++-posix)
set(CMAKE_RC_COMPILER ${MARBEX_WINDOWS_TARGET}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${MARBEX_WINDOWS_TARGET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# A till has nothing of ours but what we bring: the compiler's runtime is linked in. The same sources give the same
# bytes, whenever they are built.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -Wl,--no-insert-timestamp")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -Wl,--no-insert-timestamp")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static -Wl,--no-insert-timestamp")

# Tests run where they are built.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../../scripts/wine;run")
