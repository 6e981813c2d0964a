# The two editions of a library: shared, and static beside it.
#
# Outside Windows the static libraries are made of the very objects of the shared libraries. On Windows an object is
# compiled either to import a class or to have it linked in, so there the objects have twins, compiled with
# DATAMAPPING_STATIC and CONTROLLERPLATFORM_STATIC. Whoever links a static library is given these definitions by its
# target.
set(static_edition_definitions DATAMAPPING_STATIC CONTROLLERPLATFORM_STATIC)

# static_twin(TARGET OUT): sets OUT to the objects that the static edition of TARGET is made of. Called in the folder
# that defines TARGET, when its sources are complete.
function(static_twin target out)
    if(NOT DATAMAPPING_STATIC_LIBRARIES)
        set(${out} "" PARENT_SCOPE)
        return()
    endif()
    if(NOT WIN32)
        set(${out} $<TARGET_OBJECTS:${target}> PARENT_SCOPE)
        return()
    endif()
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources EXCLUDE REGEX "^\\$<TARGET_OBJECTS")
    add_library(${target}StaticObjects OBJECT EXCLUDE_FROM_ALL ${sources})
    target_compile_definitions(${target}StaticObjects PRIVATE ${static_edition_definitions}
        $<TARGET_PROPERTY:KelCommon,INTERFACE_COMPILE_DEFINITIONS>)
    target_include_directories(${target}StaticObjects PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/Include
        ${PROJECT_BINARY_DIR}/Generated)
    target_link_libraries(${target}StaticObjects PRIVATE Boost::log Threads::Threads)
    set(${out} $<TARGET_OBJECTS:${target}StaticObjects> PARENT_SCOPE)
endfunction()

# add_static_edition(NAME OUTPUT OBJECTS...): a static library, complete in itself but for Boost.Log.
function(add_static_edition name output)
    add_library(${name} STATIC ${ARGN})
    set_target_properties(${name} PROPERTIES OUTPUT_NAME ${output} EXPORT_NAME ${output} LINKER_LANGUAGE CXX)
    target_compile_definitions(${name} INTERFACE ${static_edition_definitions}
        $<TARGET_PROPERTY:KelCommon,INTERFACE_COMPILE_DEFINITIONS>)
    target_compile_features(${name} INTERFACE cxx_std_20)
    target_link_libraries(${name} PUBLIC Boost::log Threads::Threads)
endfunction()

# shared_library_settings(TARGET): name, version, and what stays inside, for a shared library of ours.
function(shared_library_settings target)
    set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    if(WIN32)
        set_target_properties(${target} PROPERTIES PREFIX "") # DataMapping.dll, libDataMapping.dll.a
    else()
        set(map ${PROJECT_SOURCE_DIR}/CMake/${target}.map)
        target_link_options(${target} PRIVATE LINKER:--version-script=${map})
        set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map} INSTALL_RPATH $ORIGIN)
    endif()
endfunction()
