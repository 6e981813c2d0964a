# Toolchain: 64-bit Windows, built on Linux with MinGW-w64 GCC (posix threads) and run there by Wine.
#
# WINDOWS_LIBRARIES names the folder that Scripts/windows-libraries made: the third-party libraries, built for Windows.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(triplet x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${triplet}-windres)

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES WINDOWS_LIBRARIES)
set(CMAKE_FIND_ROOT_PATH ${WINDOWS_LIBRARIES} /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Every program of this build, ours and CMake's own probes, sees the DLLs that it was linked with.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../Scripts/wine-run;${WINDOWS_LIBRARIES}/bin)
