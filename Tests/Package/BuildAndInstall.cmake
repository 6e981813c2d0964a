# Configures, builds and installs a project:  cmake -DSOURCE=... -DBUILD=... "-DOPTIONS=..." -P BuildAndInstall.cmake
execute_process(COMMAND ${CMAKE_COMMAND} --fresh -S ${SOURCE} -B ${BUILD} ${OPTIONS} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${BUILD} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} COMMAND_ERROR_IS_FATAL ANY)
