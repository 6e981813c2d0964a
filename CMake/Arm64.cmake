# Cross-builds for 64-bit ARM with Debian's GCC; the result runs by QEMU. ARM_LIBRARIES names the folder that
# Scripts/arm-libraries has filled.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(triplet aarch64-linux-gnu)
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${triplet})

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ARM_LIBRARIES)
set(libraries ${ARM_LIBRARIES}/usr/lib/${triplet})
set(CMAKE_FIND_ROOT_PATH ${ARM_LIBRARIES})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# What the libraries need themselves.
set(CMAKE_EXE_LINKER_FLAGS_INIT -Wl,-rpath-link,${libraries})
set(CMAKE_SHARED_LINKER_FLAGS_INIT -Wl,-rpath-link,${libraries})
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static -L /usr/${triplet} -E LD_LIBRARY_PATH=${libraries})
