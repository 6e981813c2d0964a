# The shared library that users link: all maps and stages, only its public classes exported.
#
# The unit tests link DataMappingInside instead: the same objects, so that they also reach what is hidden.
set(library_objects
    $<TARGET_OBJECTS:DataMapObjects> $<TARGET_OBJECTS:ConverterObjects> $<TARGET_OBJECTS:StageObjects>)

add_library(DataMapping SHARED ${library_objects})
add_library(DataMapping::DataMapping ALIAS DataMapping)
target_include_directories(DataMapping PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/Include)
target_link_libraries(DataMapping PUBLIC ControllerPlatform::ControllerPlatform PRIVATE KelCommon)
set_target_properties(DataMapping PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})

add_library(DataMappingInside INTERFACE)
target_sources(DataMappingInside INTERFACE ${library_objects})
target_compile_definitions(DataMappingInside INTERFACE DATAMAPPING_BUILD)
target_link_libraries(DataMappingInside INTERFACE KelCommon ControllerPlatform::ControllerPlatform)
