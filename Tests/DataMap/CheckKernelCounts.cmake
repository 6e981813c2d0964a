# Fails if mapping takes many more instructions, or many fewer, than it did when the counts below were pinned:
#   cmake -DPROGRAM=KernelCount -DVALGRIND=valgrind -P CheckKernelCounts.cmake
#   cmake -DPROGRAM=KernelCount "-DQEMU=qemu-aarch64-static;OPTIONS" -P CheckKernelCounts.cmake    64-bit ARM
# The counts are machine instructions per 1000 board bytes (GCC 12, RelWithDebInfo; for ARM Release), whatever the
# machine. Valgrind knows no 512-bit instructions, so the kernels without them stand for the others. To pin them anew,
# after a change that is meant to move them, put the printed figures in here.
set(allowance 10) # percent
set(pinned_arm
    scalar 5 all 17740
    neon 5 line 13049
    neon 5 all 2983
    neon 2 all 2763
    neon 5_two_bit all 5093
    neon 03 all 4470
    neon 6 all 1273
    neon 8 all 7153)
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
    set(run ${PROGRAM} ${kernel} ${style} ${work} ${lines})
    if(QEMU) # it writes a line for each instruction
        execute_process(
            COMMAND sh -c "{ \"$@\" 2>&1 >&3 | grep -c ^Trace; } 3>&1" sh ${QEMU} -singlestep -d nochain,exec
                -D /dev/stderr ${run}
            OUTPUT_VARIABLE messages)
        set(format "^([0-9]+)\n([0-9]+)\n$")
    else()
        execute_process(
            COMMAND ${VALGRIND} --tool=callgrind --callgrind-out-file=${PROGRAM}.callgrind ${run}
            OUTPUT_VARIABLE messages ERROR_VARIABLE counts)
        string(APPEND messages "${counts}")
        set(format "^([0-9]+)\n.*Collected : ([0-9]+)")
    endif()
    if(NOT messages MATCHES "${format}")
        message(FATAL_ERROR "${kernel}, style ${style}, ${work}: no count\n${messages}")
    endif()
    set(byteCount ${CMAKE_MATCH_1} PARENT_SCOPE)
    set(${out} ${CMAKE_MATCH_2} PARENT_SCOPE)
endfunction()

if(QEMU)
    set(pinned ${pinned_arm})
endif()
set(wrong FALSE)
while(pinned)
    list(POP_FRONT pinned kernel style work count)
    instructions_of(${kernel} ${style} ${work} 50 few)
    instructions_of(${kernel} ${style} ${work} 150 many)
    math(EXPR found "(${many} - ${few}) * 1000 / (100 * ${byteCount})")
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
