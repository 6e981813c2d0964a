# The consumers: Tests/Consumer, built against an installation of this build and run, once for every way to take the
# library. A cell builds in its own folder; configuring is shared between the configurations of a kind.
set(prefix ${CMAKE_CURRENT_BINARY_DIR}/installed)
set(consumer_source ${PROJECT_SOURCE_DIR}/Tests/Consumer)
set(run "")
set(consumer_toolchain -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}
    -DCMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER})
if(CMAKE_CROSSCOMPILING)
    # The runner sees the installation's own DLLs, and no others.
    list(GET CMAKE_CROSSCOMPILING_EMULATOR 0 runner)
    set(run ${runner} ${prefix}/${CMAKE_INSTALL_BINDIR})
    # A plain cross compiler: what this build found its own libraries by is not the consumer's.
    list(APPEND consumer_toolchain -DCMAKE_SYSTEM_NAME=${CMAKE_SYSTEM_NAME})
endif()

add_test(NAME Package.TheBuildInstalls
    COMMAND ${CMAKE_COMMAND} --install ${PROJECT_BINARY_DIR} --prefix ${prefix})
set_tests_properties(Package.TheBuildInstalls PROPERTIES FIXTURES_SETUP Installed)

foreach(kind IN ITEMS shared static)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/find_package-${kind})
    set(test Package.AConsumerFindsThePackage_${kind})
    add_test(NAME ${test}
        COMMAND ${CMAKE_COMMAND} --fresh -S ${consumer_source} -B ${folder} -G "Ninja Multi-Config"
            "-DCMAKE_CONFIGURATION_TYPES=Debug;Release" ${consumer_toolchain} -DCMAKE_PREFIX_PATH=${prefix}
            -DCONSUMER_KIND=${kind} -DCONSUMER_INCLUDE_FOLDER=${prefix}/${CMAKE_INSTALL_INCLUDEDIR})
    set_tests_properties(${test} PROPERTIES FIXTURES_REQUIRED Installed FIXTURES_SETUP Consumer_${kind})
    if(kind STREQUAL "static")
        set(module DataMapping-static)
    else()
        set(module DataMapping)
    endif()
    foreach(config IN ITEMS Debug Release)
        set(test Package.AConsumerBuildsAndRuns_find_package_${kind}_${config})
        add_test(NAME ${test}
            COMMAND ${CMAKE_COMMAND} -DHOW=find_package -DBUILD=${folder} -DCONFIG=${config} "-DRUN=${run}"
                -P ${CMAKE_CURRENT_SOURCE_DIR}/RunConsumer.cmake)
        # The two configurations share a build folder.
        set_tests_properties(${test} PROPERTIES FIXTURES_REQUIRED "Installed;Consumer_${kind}"
            RESOURCE_LOCK Consumer_${kind})

        string(TOUPPER CMAKE_CXX_FLAGS_${config} flags)
        separate_arguments(flags UNIX_COMMAND "${${flags}}")
        set(test Package.AConsumerBuildsAndRuns_pkg-config_${kind}_${config})
        add_test(NAME ${test}
            COMMAND ${CMAKE_COMMAND} -DHOW=pkg-config -DMODULE=${module} -DPREFIX=${prefix}
                -DLIBDIR=${CMAKE_INSTALL_LIBDIR} "-DCOMPILER=${CMAKE_CXX_COMPILER_LAUNCHER};${CMAKE_CXX_COMPILER}"
                "-DFLAGS=${flags}" -DSOURCE=${consumer_source}/Main.cpp
                -DBUILD=${CMAKE_CURRENT_BINARY_DIR}/pkg-config-${kind}-${config} "-DRUN=${run}"
                -P ${CMAKE_CURRENT_SOURCE_DIR}/RunConsumer.cmake)
        set_tests_properties(${test} PROPERTIES FIXTURES_REQUIRED Installed)
    endforeach()
endforeach()

# The packages, made and tried.
if(CMAKE_CROSSCOMPILING)
    set(package_runner ${runner})
else()
    set(package_runner "")
endif()
add_test(NAME Package.ThePackagesInstallWorkAndAreRemoved
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/check-packages ${PROJECT_BINARY_DIR} ${CMAKE_CURRENT_BINARY_DIR}/packages
        ${PROJECT_VERSION} ${package_runner})

# The vendor's platform: the plain edition as a package of its own, this repository built on it from its sources, and a
# host that finds both. Nothing of it comes from this build.
if(NOT WIN32)
    set(plain ${CMAKE_CURRENT_BINARY_DIR}/plain)
    set(plain_source ${PROJECT_SOURCE_DIR}/Tests/PlainPlatform)
    set(plain_options -GNinja ${consumer_toolchain} -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS=-O0
        -DCMAKE_INSTALL_PREFIX=${plain}/installed -DCMAKE_PREFIX_PATH=${plain}/installed)
    add_test(NAME Package.AVendorsPlatformInstalls
        COMMAND ${CMAKE_COMMAND} -DSOURCE=${plain_source}/Package -DBUILD=${plain}/platform "-DOPTIONS=${plain_options}"
            -P ${CMAKE_CURRENT_SOURCE_DIR}/BuildAndInstall.cmake)
    set_tests_properties(Package.AVendorsPlatformInstalls PROPERTIES FIXTURES_SETUP VendorsPlatform)
    add_test(NAME Package.TheLibraryIsBuiltOnAVendorsPlatformAndInstalls
        COMMAND ${CMAKE_COMMAND} -DSOURCE=${PROJECT_SOURCE_DIR} -DBUILD=${plain}/library
            "-DOPTIONS=${plain_options};-DDATAMAPPING_EMBEDDED_PLATFORM=OFF" -P ${CMAKE_CURRENT_SOURCE_DIR}/BuildAndInstall.cmake)
    set_tests_properties(Package.TheLibraryIsBuiltOnAVendorsPlatformAndInstalls PROPERTIES
        FIXTURES_REQUIRED VendorsPlatform FIXTURES_SETUP VendorsLibrary TIMEOUT 900)
    add_test(NAME Package.AHostOnAVendorsPlatformBuildsAndRuns
        COMMAND ${CMAKE_CTEST_COMMAND} --build-and-test ${plain_source}/Consumer ${plain}/consumer
            --build-generator Ninja --build-options ${consumer_toolchain} -DCMAKE_PREFIX_PATH=${plain}/installed
            --test-command ${plain}/consumer/consumer)
    set_tests_properties(Package.AHostOnAVendorsPlatformBuildsAndRuns PROPERTIES
        FIXTURES_REQUIRED "VendorsPlatform;VendorsLibrary")
endif()
