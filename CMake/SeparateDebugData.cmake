# Run by cpack before it makes the .zip for Windows: moves the debug data of our DLLs and programs into debug/, one file
# each, and leaves a link to it, so that a debugger finds it there. The static libraries and the third-party DLLs go
# without.
find_program(objcopy NAMES x86_64-w64-mingw32-objcopy REQUIRED)
file(GLOB_RECURSE files ${CPACK_TEMPORARY_DIRECTORY}/bin/DataMapping.dll
    ${CPACK_TEMPORARY_DIRECTORY}/bin/ControllerPlatform.dll ${CPACK_TEMPORARY_DIRECTORY}/bin/boardmap.exe)
foreach(file IN LISTS files)
    get_filename_component(name ${file} NAME)
    set(debug ${CPACK_TEMPORARY_DIRECTORY}/debug/${name}.debug)
    file(MAKE_DIRECTORY ${CPACK_TEMPORARY_DIRECTORY}/debug)
    execute_process(COMMAND ${objcopy} --only-keep-debug ${file} ${debug} COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${objcopy} --strip-unneeded --add-gnu-debuglink=${debug} ${file} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

file(GLOB_RECURSE others ${CPACK_TEMPORARY_DIRECTORY}/bin/*.dll ${CPACK_TEMPORARY_DIRECTORY}/lib/*.a)
list(REMOVE_ITEM others ${files})
list(FILTER others EXCLUDE REGEX "[.]dll[.]a$")
foreach(file IN LISTS others)
    execute_process(COMMAND ${objcopy} --strip-debug ${file} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
