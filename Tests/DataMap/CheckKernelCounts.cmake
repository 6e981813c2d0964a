# Fails if mapping takes many more instructions, or many fewer, than it did when the counts below were pinned:
#   cmake -DPROGRAM=KernelCount -DVALGRIND=valgrind -P CheckKernelCounts.cmake
# The counts are machine instructions per 1000 board bytes (GCC 12, RelWithDebInfo), whatever the machine. The counter
# knows no 512-bit instructions, so the kernels without them stand for the others. To pin them anew, after a change that
# is meant to move them, put the printed figures in here.
set(allowance 10) # percent
set(pinned
    scalar 5 line 50910
    scalar 5 all 31075
    avx2 5 line 8870
    avx2 5 all 2348
    avx2 1 line 9690
    avx2 1 all 2343
    avx2 2 line 4790
    avx2 2 all 2138
    avx2 5_two_bit line 5720
    avx2 5_two_bit all 3673
    avx2 03 line 6360
    avx2 03 all 3780
    avx2 03_01 line 3500
    avx2 03_01 all 3827
    avx2 6 line 4570
    avx2 6 all 1407
    avx2 7 line 6715
    avx2 7 all 2269
    avx2 8 line 13445
    avx2 8 all 4506)

# Sets OUT to the instructions of a run, and byteCount to the bytes of a board line.
function(instructions_of kernel style work lines out)
    execute_process(
        COMMAND ${VALGRIND} --tool=callgrind --callgrind-out-file=${PROGRAM}.callgrind
            ${PROGRAM} ${kernel} ${style} ${work} ${lines}
        RESULT_VARIABLE status OUTPUT_VARIABLE bytes ERROR_VARIABLE messages OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT status EQUAL 0 OR NOT messages MATCHES "Collected : ([0-9]+)")
        message(FATAL_ERROR "${kernel}, style ${style}, ${work}: no count\n${messages}")
    endif()
    set(${out} ${CMAKE_MATCH_1} PARENT_SCOPE)
    set(byteCount ${bytes} PARENT_SCOPE)
endfunction()

set(wrong FALSE)
while(pinned)
    list(POP_FRONT pinned kernel style work count)
    instructions_of(${kernel} ${style} ${work} 50 few)
    instructions_of(${kernel} ${style} ${work} 250 many)
    math(EXPR found "(${many} - ${few}) * 1000 / (200 * ${byteCount})")
    math(EXPR low "${count} * (100 - ${allowance}) / 100")
    math(EXPR high "${count} * (100 + ${allowance}) / 100")
    message(STATUS "${kernel} ${style} ${work}: ${found} instructions per 1000 board bytes, pinned ${count}")
    if(found LESS low OR found GREATER high)
        set(wrong TRUE)
    endif()
endwhile()
if(wrong)
    message(FATAL_ERROR "instruction counts have moved by more than ${allowance} percent")
endif()
