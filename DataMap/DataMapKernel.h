// The kernels of the data maps, by name: which there are, which one is in use, and how to use another.
//
// A kernel is one version of the maps' inner loops, written for the instructions of one kind of processor: "scalar"
// needs none in particular and is the definition; "ssse3", "avx2", "avx512" and "avx512-gfni" for x86 processors, and
// "neon" for 64-bit ARM, leave the same bytes, faster. The library chooses the best that processor and operating system
// allow, once, when the first line is mapped. To set another is for measuring and for tests. Nothing here allocates,
// logs or waits.
#pragma once

#include "DataMap/DataMappingExport.h"

// All operations may be called from any thread, at any time.
class DATAMAPPING_API CDataMapKernel
{
public:
    // How many kernels this build of the library has, those included that this machine cannot run.
    static int Count_Get();

    // The name of kernel `index` (0 to Count_Get() - 1), from the definition to the most demanding; null for any other
    // index. The text is a constant.
    static const char* Name_Get(int index);

    // Whether a kernel of this name is there and processor and operating system can run it.
    static bool IsAvailable(const char* name);

    // The name of the kernel in use.
    static const char* Current_Get();

    // Uses the kernel of this name from the next mapped line on; lines that other threads are mapping right now are
    // finished with the one they began with. False for an unknown name (null too) and for a kernel that this machine
    // cannot run: the current one stays.
    static bool Current_Set(const char* name);
};
