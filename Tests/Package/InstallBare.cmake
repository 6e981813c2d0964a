# Installs DataMapping without a ControllerPlatform:  cmake -DBUILD=folder -DPREFIX=folder -P InstallBare.cmake
file(REMOVE_RECURSE ${PREFIX})
foreach(component IN ITEMS Library Development)
    execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX} --component ${component}
        COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(GLOB_RECURSE left ${PREFIX}/*ControllerPlatform*)
if(left)
    message(FATAL_ERROR "parts of a platform were installed: ${left}")
endif()
