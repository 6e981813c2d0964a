# What cpack makes of an installation: Debian packages on Linux, one .zip for Windows.
set(CPACK_PACKAGE_NAME datamapping)
set(CPACK_PACKAGE_VENDOR "the authors of boardmap")
set(CPACK_PACKAGE_CONTACT "The authors of boardmap <authors@boardmap.invalid>" CACHE STRING "Maintainer of the packages")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/COPYRIGHT)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_THREADS 0)

if(WIN32)
    # One archive: DLLs, the third-party DLLs that they need, everything to build with, licences; debug data apart.
    set(CPACK_GENERATOR ZIP)
    set(CPACK_SYSTEM_NAME win64)
    set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/CMake/SeparateDebugData.cmake)
    install(FILES ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/COPYRIGHT ${PROJECT_SOURCE_DIR}/README.md
        DESTINATION . COMPONENT Library)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/Docs DESTINATION . COMPONENT Library FILES_MATCHING PATTERN "*.md")
    install(CODE "set(search_folders ${CMAKE_FIND_ROOT_PATH})
set(own_files \"${CMAKE_INSTALL_BINDIR}\")
set(library_folder \"${CMAKE_INSTALL_LIBDIR}\")
set(objdump ${CMAKE_OBJDUMP})" COMPONENT Library)
    install(SCRIPT ${PROJECT_SOURCE_DIR}/CMake/InstallRuntime.cmake COMPONENT Library)
    include(CPack)
    return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL Library Development)
if(DATAMAPPING_EMBEDDED_PLATFORM)
    list(APPEND CPACK_COMPONENTS_ALL Platform PlatformDevelopment)
endif()
if(DATAMAPPING_HOST)
    list(APPEND CPACK_COMPONENTS_ALL Tools)
endif()
set(CPACK_COMPONENT_PLATFORMDEVELOPMENT_GROUP Headers)
set(CPACK_COMPONENT_DEVELOPMENT_GROUP Headers)
# In the system's own folders nothing needs to say where its libraries are.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/CMake/SystemPackage.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(deb_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

# debian_package(COMPONENT_OR_GROUP NAME SECTION DEPENDS SUMMARY TEXT): one package. The text's lines are filled up.
macro(debian_package component name section depends summary text)
    string(TOUPPER ${component} key)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${key}_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${depends}")
    set(CPACK_DEBIAN_${key}_DESCRIPTION "${summary}\n${text}")
    set(CPACK_COMPONENT_${key}_DESCRIPTION "${summary}\n${text}")
    set(CPACK_COMPONENT_GROUP_${key}_DESCRIPTION "${summary}\n${text}")
endmacro()
set(about "The data-mapping library of an inkjet printer controller rewrites the pixel
data of print units into the bit layout that head-driver boards expect.")
debian_package(Platform libcontrollerplatform${PROJECT_VERSION_MAJOR} libs ""
    "controller libraries that the data-mapping library runs on"
    "${about}\nThis package holds the embedded edition of the libraries around it: threads,
bands, FIFOs, configuration and log.")
debian_package(Library libdatamapping${PROJECT_VERSION_MAJOR} libs
    "libcontrollerplatform${PROJECT_VERSION_MAJOR} (= ${deb_version})"
    "data mapping for inkjet printer controllers"
    "${about}\nThis package holds the shared library.")
debian_package(Headers libdatamapping-dev libdevel
    "libdatamapping${PROJECT_VERSION_MAJOR} (= ${deb_version}), libcontrollerplatform${PROJECT_VERSION_MAJOR} (= ${deb_version}), libboost-log-dev (>= 1.74)"
    "data mapping for inkjet printer controllers - development files"
    "${about}\nThis package holds headers, static libraries, and the packages for CMake and
pkg-config.")
debian_package(Tools boardmap-tools graphics
    "libdatamapping${PROJECT_VERSION_MAJOR} (= ${deb_version}), libcontrollerplatform${PROJECT_VERSION_MAJOR} (= ${deb_version})"
    "converts page separations into board data"
    "${about}\nThis package holds boardmap, its command-line host.")

# Who links one of the libraries depends on its package; and the system looks for libraries anew when one comes or goes.
foreach(library IN ITEMS Platform:ControllerPlatform Library:DataMapping)
    string(REPLACE ":" ";" library ${library})
    list(GET library 0 component)
    list(GET library 1 name)
    string(TOUPPER ${component} key)
    set(folder ${PROJECT_BINARY_DIR}/Generated/${component})
    file(WRITE ${folder}/triggers "activate-noawait ldconfig\n")
    file(WRITE ${folder}/shlibs
        "lib${name} ${PROJECT_VERSION_MAJOR} ${CPACK_DEBIAN_${key}_PACKAGE_NAME} (>= ${PROJECT_VERSION})\n")
    set(CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA "${folder}/triggers;${folder}/shlibs")
endforeach()

# What every Debian package says of itself: copyright and changelog; the changelog in Debian's own form, compressed
# without a time stamp.
find_program(GZIP_PROGRAM gzip)
if(GZIP_PROGRAM)
    include(DebianChangelog)
    debian_changelog(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_BINARY_DIR}/Generated)
    set(doc_folder ${CMAKE_INSTALL_DATAROOTDIR}/doc)
    foreach(package IN ITEMS Platform:libcontrollerplatform${PROJECT_VERSION_MAJOR} Tools:boardmap-tools
            Library:libdatamapping${PROJECT_VERSION_MAJOR} Development:libdatamapping-dev)
        string(REPLACE ":" ";" package ${package})
        list(GET package 0 component)
        list(GET package 1 name)
        install(FILES ${PROJECT_SOURCE_DIR}/COPYRIGHT DESTINATION ${doc_folder}/${name} RENAME copyright
            COMPONENT ${component})
        install(FILES ${PROJECT_BINARY_DIR}/Generated/changelog.Debian.gz DESTINATION ${doc_folder}/${name}
            COMPONENT ${component})
    endforeach()
endif()
if(TARGET pages AND UNIX)
    set(pages ${PROJECT_BINARY_DIR}/Generated/pages)
    install(CODE "
        file(GLOB pages ${pages}/*.1)
        foreach(page IN LISTS pages)
            execute_process(COMMAND ${GZIP_PROGRAM} -9nkf \${page} COMMAND_ERROR_IS_FATAL ANY)
        endforeach()" COMPONENT Tools)
    install(DIRECTORY ${pages}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Tools FILES_MATCHING PATTERN "*.1.gz")
    install(FILES ${pages}/boardmap.bash DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions
        RENAME boardmap COMPONENT Tools)
    install(FILES ${pages}/_boardmap DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/zsh/vendor-completions COMPONENT Tools)
    install(FILES ${pages}/boardmap.fish DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/fish/vendor_completions.d
        COMPONENT Tools)
endif()
include(CPack)
