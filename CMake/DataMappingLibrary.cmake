# The library that users link: all maps and stages, only its public classes exported; shared, and static beside it.
#
# The unit tests link DataMappingInside instead: the same objects, so that they also reach what is hidden.
set(library_objects
    $<TARGET_OBJECTS:DataMapObjects> $<TARGET_OBJECTS:ConverterObjects> $<TARGET_OBJECTS:StageObjects>)
set(library_includes
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/Include>
    $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/Generated> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/DataMapping>)
configure_file(${PROJECT_SOURCE_DIR}/DataMap/DataMappingVersion.h.in
    ${PROJECT_BINARY_DIR}/Generated/DataMap/DataMappingVersion.h)

# KelCommon comes first: a linker that goes through the libraries once finds what it needs in the platform's.
add_library(DataMapping SHARED ${library_objects})
add_library(DataMapping::DataMapping ALIAS DataMapping)
target_include_directories(DataMapping PUBLIC ${library_includes})
target_compile_features(DataMapping INTERFACE cxx_std_20)
target_link_libraries(DataMapping PUBLIC KelCommon ControllerPlatform::ControllerPlatform)
shared_library_settings(DataMapping)

if(DATAMAPPING_STATIC_LIBRARIES)
    set(objects ${DataMapObjectsStatic} ${ConverterObjectsStatic} ${StageObjectsStatic} $<TARGET_OBJECTS:KelCommon>)
    add_static_edition(DataMappingStatic DataMapping ${objects})
    target_include_directories(DataMappingStatic PUBLIC ${library_includes})
    target_link_libraries(DataMappingStatic PUBLIC ControllerPlatformStatic)
endif()

add_library(DataMappingInside INTERFACE)
target_sources(DataMappingInside INTERFACE ${library_objects})
target_compile_definitions(DataMappingInside INTERFACE DATAMAPPING_BUILD)
target_link_libraries(DataMappingInside INTERFACE KelCommon ControllerPlatform::ControllerPlatform)
