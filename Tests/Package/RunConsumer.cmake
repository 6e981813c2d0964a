# One cell of the consumer tests: builds Tests/Consumer against an installation and runs it.
#   cmake -DHOW=find_package -DBUILD=folder -DCONFIG=Debug -DRUN=command... -P RunConsumer.cmake
#   cmake -DHOW=pkg-config -DMODULE=DataMapping -DPREFIX=... -DLIBDIR=lib -DCOMPILER=... -DFLAGS=... -DSOURCE=... \
#         -DBUILD=folder -DRUN=command... -P RunConsumer.cmake
# DLLS is a folder of further DLLs for the program: those of a Windows build stand beside it.
# RUN is what starts a program of that system, with an empty list for this machine's own.
cmake_policy(SET CMP0057 NEW)

if(HOW STREQUAL "find_package")
    execute_process(COMMAND ${CMAKE_COMMAND} --build ${BUILD} --config ${CONFIG} COMMAND_ERROR_IS_FATAL ANY)
    file(GLOB program ${BUILD}/${CONFIG}/consumer ${BUILD}/${CONFIG}/consumer.exe)
    if(DLLS AND program MATCHES "[.]exe$")
        file(GLOB dlls ${DLLS}/*.dll)
        file(COPY ${dlls} DESTINATION ${BUILD}/${CONFIG})
    endif()
else()
    # Nothing but the installation is looked through; a machine that was not built with it has no other place for it.
    set(ENV{PKG_CONFIG_LIBDIR} ${PREFIX}/${LIBDIR}/pkgconfig)
    set(ENV{PKG_CONFIG_PATH} "")
    execute_process(COMMAND pkg-config --define-prefix --modversion ${MODULE}
        OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND pkg-config --define-prefix --cflags --libs ${MODULE}
        OUTPUT_VARIABLE found OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(found UNIX_COMMAND "${found}")
    file(MAKE_DIRECTORY ${BUILD})
    set(program ${BUILD}/consumer.exe)
    execute_process(COMMAND ${COMPILER} -std=c++20 ${FLAGS} -Wall -Wextra -Wpedantic -Wshadow -Werror
        -DCONSUMER_EXPECTED_VERSION="${version}" ${SOURCE} ${found} -o ${program} COMMAND_ERROR_IS_FATAL ANY)
    set(ENV{LD_LIBRARY_PATH} ${PREFIX}/${LIBDIR})
endif()
execute_process(COMMAND ${RUN} ${program} COMMAND_ERROR_IS_FATAL ANY)
