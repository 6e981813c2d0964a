# What an installation holds, by component:
#   Platform             the embedded ControllerPlatform, the shared library
#   PlatformDevelopment  its headers (include/ControllerPlatform), libraries to link, and packages
#   Library              DataMapping, the shared library
#   Development          its headers (include/DataMapping), libraries to link, and packages
#   Tools                boardmap
#
# There are three packages for CMake and pkg-config: DataMapping; ControllerPlatform, which it finds as a dependency, so
# that another edition takes its place by being found first; and KelCommon, the templates and the log function, which
# has no need of either. Docs/install.md says how to use them.
include(CMakePackageConfigHelpers)

# The public headers; all others stay inside.
set(map_headers
    DataMapKernel.h DataMappingExport.h PrintUnitDataMap_03.h PrintUnitDataMap_03_01.h PrintUnitDataMap_1.h PrintUnitDataMap_2.h
    PrintUnitDataMap_4.h PrintUnitDataMap_5.h PrintUnitDataMap_6.h PrintUnitDataMap_7.h PrintUnitDataMap_8.h
    PrintUnitDataMap_Base.h SrcBandDataParam.h)
list(TRANSFORM map_headers PREPEND ${PROJECT_SOURCE_DIR}/DataMap/)
list(APPEND map_headers ${PROJECT_BINARY_DIR}/Generated/DataMap/DataMappingVersion.h)
set(stage_headers
    InkStripeParam_Run.h InputElement.h UnitData2BoardData_AllUnit_2.h UnitData2BoardData_Base.h
    UnitData2BoardData_S_AllUnit.h)
list(TRANSFORM stage_headers PREPEND ${PROJECT_SOURCE_DIR}/UnitData2BoardData/)

set(include_root ${CMAKE_INSTALL_INCLUDEDIR}/DataMapping)
install(FILES ${map_headers} DESTINATION ${include_root}/DataMap COMPONENT Development)
install(FILES ${stage_headers} DESTINATION ${include_root}/UnitData2BoardData COMPONENT Development)
install(FILES ${PROJECT_SOURCE_DIR}/Unit2Board/Unit2Board.h DESTINATION ${include_root}/Unit2Board
    COMPONENT Development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/Include/Compiler ${PROJECT_SOURCE_DIR}/Include/KelCommon DESTINATION ${include_root} COMPONENT Development)

# install_library(NAME COMPONENT DEVELOPMENT): the shared library of that name and the static one, for CMake and
# pkg-config.
function(install_library name component development)
    set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/${name})
    set(kinds Shared)
    install(TARGETS ${name} EXPORT ${name}Shared
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component} NAMELINK_COMPONENT ${development}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${development})
    if(DATAMAPPING_STATIC_LIBRARIES)
        list(APPEND kinds Static)
        install(TARGETS ${name}Static EXPORT ${name}Static
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${development})
    endif()
    foreach(kind IN LISTS kinds)
        install(EXPORT ${name}${kind} NAMESPACE ${name}:: DESTINATION ${package_folder} COMPONENT ${development})
    endforeach()
    install_package(${name} ${development})
    install_pkgconfig(${name} ${development})
    if(DATAMAPPING_STATIC_LIBRARIES)
        install_pkgconfig(${name}-static ${development})
    endif()
endfunction()

# install_package(NAME COMPONENT): the CMake package's configuration and version.
function(install_package name component)
    set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/${name})
    configure_package_config_file(${PROJECT_SOURCE_DIR}/CMake/${name}Config.cmake.in
        ${PROJECT_BINARY_DIR}/Generated/${name}Config.cmake INSTALL_DESTINATION ${package_folder}
        PATH_VARS CMAKE_INSTALL_LIBDIR)
    write_basic_package_version_file(${PROJECT_BINARY_DIR}/Generated/${name}ConfigVersion.cmake
        COMPATIBILITY SameMajorVersion)
    install(FILES ${PROJECT_BINARY_DIR}/Generated/${name}Config.cmake
        ${PROJECT_BINARY_DIR}/Generated/${name}ConfigVersion.cmake DESTINATION ${package_folder}
        COMPONENT ${component})
endfunction()

# install_pkgconfig(NAME COMPONENT): the .pc file. It names its own place, so that the installation can be moved.
function(install_pkgconfig name component)
    file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    string(REGEX REPLACE "/$" "" prefix_from_pc ${prefix_from_pc})
    set(system_libraries -lboost_log)
    if(WIN32)
        string(APPEND system_libraries " -lshell32 -lsynchronization")
    else()
        string(APPEND system_libraries " -pthread")
    endif()
    set(boost_definitions -DBOOST_LOG_DYN_LINK)
    if(WIN32)
        string(APPEND boost_definitions " -DBOOST_ALL_NO_LIB -DBOOST_USE_WINAPI_VERSION=0x0A00")
    endif()
    configure_file(${PROJECT_SOURCE_DIR}/CMake/${name}.pc.in ${PROJECT_BINARY_DIR}/Generated/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/Generated/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT ${component})
endfunction()

install(TARGETS KelCommon EXPORT KelCommon
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development)
install(EXPORT KelCommon NAMESPACE KelCommon:: FILE KelCommonTargets.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/KelCommon COMPONENT Development)
install(FILES ${PROJECT_SOURCE_DIR}/CMake/KelCommonKind.cmake DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/KelCommon
    COMPONENT Development)
install_package(KelCommon Development)
install_pkgconfig(KelCommon Development)
install_library(DataMapping Library Development)

if(DATAMAPPING_EMBEDDED_PLATFORM)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/Platform DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ControllerPlatform
        COMPONENT PlatformDevelopment FILES_MATCHING PATTERN "*.h"
        PATTERN AddressWait.h EXCLUDE PATTERN BandMemory.h EXCLUDE PATTERN WorkerWait.h EXCLUDE) # inside only
    install_library(ControllerPlatform Platform PlatformDevelopment)
endif()

if(DATAMAPPING_HOST)
    install(TARGETS boardmap RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Tools)
    if(NOT WIN32)
        file(RELATIVE_PATH libraries_from_tools /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
        set_target_properties(boardmap PROPERTIES INSTALL_RPATH $ORIGIN/${libraries_from_tools})
    endif()
endif()
