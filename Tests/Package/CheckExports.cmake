# Fails unless the shared library's dynamic symbols are exactly those of the exported classes:
#   cmake -DLIBRARY=libDataMapping.so -DNM=nm -P CheckExports.cmake
# Every class must be there whole (its virtual table is among its symbols), and no other symbol of ours may be.
set(classes
    CPrintUnitDataMap_Base
    CPrintUnitDataMap_1
    CPrintUnitDataMap_2
    CPrintUnitDataMap_03
    CPrintUnitDataMap_03_01
    CPrintUnitDataMap_4
    CPrintUnitDataMap_5
    CPrintUnitDataMap_6
    CPrintUnitDataMap_7
    CPrintUnitDataMap_8
    CUnit2Board
    CUnitData2BoardData_Base
    CUnitData2BoardData_S_AllUnit
    CUnitData2BoardData_AllUnit_2
    "CKelBaseThread<CUnit2Board>"
    "CKelBaseThread<CUnitData2BoardData_Base>")

execute_process(COMMAND ${NM} -DC --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE ";" "," symbols "${symbols}")
string(REPLACE "\n" ";" symbols "${symbols}")

set(unexpected "")
foreach(line IN LISTS symbols)
    string(REGEX REPLACE "^[0-9a-f]* +[A-Za-z] " "" name "${line}")
    if(name STREQUAL "" OR name MATCHES
            "^(([a-z]+ )?std::|typeinfo( name)? for std::|vtable for std::|__asan|__odr|__tsan|__ubsan)")
        continue() # the standard library's own templates (some with their return type), and the sanitizers' own
    endif()
    set(bKnown FALSE)
    foreach(class IN LISTS classes)
        foreach(prefix IN ITEMS "" "vtable for " "typeinfo for " "typeinfo name for " "non-virtual thunk to ")
            string(FIND "${name}" "${prefix}${class}" at)
            if(at EQUAL 0)
                set(bKnown TRUE)
            endif()
        endforeach()
    endforeach()
    if(NOT bKnown)
        string(APPEND unexpected "  ${name}\n")
    endif()
endforeach()
if(unexpected)
    message(FATAL_ERROR "exported, but not public:\n${unexpected}")
endif()

foreach(class IN LISTS classes)
    string(FIND "${symbols}" "vtable for ${class};" at)
    if(at EQUAL -1)
        message(FATAL_ERROR "not exported: the virtual table of ${class}")
    endif()
endforeach()
message(STATUS "only the public classes are exported")
