# Fails if mapping takes many more instructions, or many fewer, than it did when the counts below were pinned:
#   cmake -DPROGRAM=KernelCount -DVALGRIND=valgrind -P CheckKernelCounts.cmake
# The counts are machine instructions per 1000 board bytes (GCC 12, RelWithDebInfo), whatever the machine. The counter
# knows no 512-bit instructions, so the kernels without them stand for the others. To pin them anew, after a change that
# is meant to move them, put the printed figures in here.
set(allowance 10) # percent
set(pinned
    scalar line 60708
    scalar all 31566
    avx2 line 10688
    avx2 all 2853)

function(instructions_of kernel work lines out)
    execute_process(
        COMMAND ${VALGRIND} --tool=callgrind --callgrind-out-file=${PROGRAM}.callgrind ${PROGRAM} ${kernel} ${work} ${lines}
        RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE messages)
    if(NOT status EQUAL 0 OR NOT messages MATCHES "Collected : ([0-9]+)")
        message(FATAL_ERROR "${kernel} ${work}: no count\n${messages}")
    endif()
    set(${out} ${CMAKE_MATCH_1} PARENT_SCOPE)
endfunction()

set(wrong FALSE)
while(pinned)
    list(POP_FRONT pinned kernel work count)
    instructions_of(${kernel} ${work} 100 few)
    instructions_of(${kernel} ${work} 600 many)
    math(EXPR found "(${many} - ${few}) * 1000 / (500 * 800)")
    math(EXPR low "${count} * (100 - ${allowance}) / 100")
    math(EXPR high "${count} * (100 + ${allowance}) / 100")
    message(STATUS "${kernel} ${work}: ${found} instructions per 1000 board bytes, pinned ${count}")
    if(found LESS low OR found GREATER high)
        set(wrong TRUE)
    endif()
endwhile()
if(wrong)
    message(FATAL_ERROR "instruction counts have moved by more than ${allowance} percent")
endif()
