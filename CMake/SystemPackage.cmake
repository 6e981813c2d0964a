# Run by cpack before it makes Debian packages of what was installed: a library in the system's own folder needs no run
# path, and must not have one.
file(GLOB_RECURSE files LIST_DIRECTORIES OFF ${CPACK_TEMPORARY_DIRECTORY}/*)
foreach(file IN LISTS files)
    if(NOT IS_SYMLINK ${file} AND file MATCHES "(/bin/[^/]+|[.]so[.0-9]+)$")
        file(RPATH_REMOVE FILE ${file})
        message(STATUS "without a run path: ${file}")
    endif()
endforeach()
