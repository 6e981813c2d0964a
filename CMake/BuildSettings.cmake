# What every target of this build shares. Nothing here reaches a consumer of the installed package.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

find_package(Threads REQUIRED)
find_package(Boost 1.74 REQUIRED COMPONENTS log)
if(NOT TARGET Boost::date_time)
    add_library(Boost::date_time INTERFACE IMPORTED) # of headers alone, though FindBoost asks for it
endif()

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    if(DATAMAPPING_COVERAGE)
        # Counters that threads share must be counted up as one. No inlining: a line keeps its own branches.
        add_compile_options(--coverage -fprofile-update=atomic -fprofile-abs-path -fno-inline)
        add_link_options(--coverage)
    else()
        # Source paths in log scopes and debug data are relative to the repository, whoever builds it.
        add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
    endif()
    if(WIN32)
        add_compile_options(-g) # packages hold the debug data apart
    endif()
    if(DATAMAPPING_DEVELOPER)
        add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Wcast-qual
                            -Woverloaded-virtual -Werror)
        if(MINGW AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
            # This compiler takes the sum of a literal and a string for an overlapping copy when it optimises fully.
            add_compile_options(-Wno-restrict)
        endif()
        if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND DATAMAPPING_SANITIZE MATCHES "thread")
            # The thread fences inside libstdc++ are not instrumented; none is relied upon here.
            add_compile_options(-Wno-tsan)
        endif()
    endif()
    # What makes a mistake harder to misuse, where it costs nothing that can be measured: Docs/robustness.md has the
    # figures, and says why there is no more of it and none for Windows.
    set(DATAMAPPING_HARDENED FALSE)
    if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND NOT DATAMAPPING_SANITIZE AND NOT DATAMAPPING_COVERAGE
            AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
        set(DATAMAPPING_HARDENED TRUE)
        add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
        add_link_options(LINKER:-z,relro LINKER:-z,now)
    endif()
    if(DATAMAPPING_FUZZ)
        add_compile_options(-fsanitize=fuzzer-no-link)
    endif()
    if(DATAMAPPING_SANITIZE)
        add_compile_options(-fsanitize=${DATAMAPPING_SANITIZE} -fno-omit-frame-pointer -g -O1)
        add_link_options(-fsanitize=${DATAMAPPING_SANITIZE})
        if(DATAMAPPING_SANITIZE MATCHES "undefined")
            add_compile_options(-fno-sanitize-recover=undefined)
        endif()
    endif()
endif()
