# The library's own sources once more, for targets that compile them against another edition of the platform.

# library_links(OUT): a folder of links to the library's folders, and to nothing else. Sources that find their headers
# below it reach neither Platform/ of this repository nor anything of Tests/.
function(library_links out)
    set(root ${CMAKE_CURRENT_BINARY_DIR}/links)
    file(MAKE_DIRECTORY ${root})
    foreach(folder IN ITEMS DataMap Unit2Board UnitData2BoardData)
        file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${folder} ${root}/${folder} SYMBOLIC)
    endforeach()
    set(${out} ${root} PARENT_SCOPE)
endfunction()

# tests_link(OUT): the same with a link to Tests/.
function(tests_link out)
    set(root ${CMAKE_CURRENT_BINARY_DIR}/tests_root)
    file(MAKE_DIRECTORY ${root})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/Tests ${root}/Tests SYMBOLIC)
    set(${out} ${root} PARENT_SCOPE)
endfunction()

# library_sources(OUT OBJECTS...): the sources of these object libraries, for a target of the calling folder, with the
# options that single files are compiled with.
function(library_sources out)
    set(all "")
    foreach(objects IN LISTS ARGN)
        get_target_property(sources ${objects} SOURCES)
        get_target_property(folder ${objects} SOURCE_DIR)
        foreach(source IN LISTS sources)
            get_source_file_property(options ${folder}/${source} DIRECTORY ${folder} COMPILE_OPTIONS)
            if(options)
                set_source_files_properties(${folder}/${source} PROPERTIES COMPILE_OPTIONS "${options}")
            endif()
            list(APPEND all ${folder}/${source})
        endforeach()
    endforeach()
    set(${out} ${all} PARENT_SCOPE)
endfunction()
