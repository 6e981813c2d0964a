// A converter whose owner runs out of memory while it is being made.
#include "Tests/Support/AllocationFailure.h"
#include "Tests/Support/ThreadFailure.h"
#include "Tests/Unit2Board/ConverterSupport.h"

#include <new>

// Whichever allocation fails, no thread runs on without its converter, nothing leaks, and the exception passes.
TEST(ConverterMemory, WhateverAllocationFailsNoGeneratorOutlivesItsConverter)
{
    int thrownCount = 0;
    bool bHasFailed = true;
    for (int nth = 1; bHasFailed; ++nth)
    {
        ASSERT_LT(nth, 1000);
        SBandJob job(2, 50);
        CUnit2Board converter;
        bool bCreated = false;
        {
            const CAllocationFailure noMemory(nth);
            try
            {
                bCreated = job.Create(converter, 3);
            }
            catch (const std::bad_alloc&)
            {
                ++thrownCount;
            }
            bHasFailed = noMemory.HasFailed();
        }
        EXPECT_NE(bCreated, bHasFailed) << "allocation " << nth;
        EXPECT_TRUE(bCreated || CThreadFailure::Running_Count() == 0) << "allocation " << nth;
        EXPECT_TRUE(converter.WaitExit(testPatienceMs));
        EXPECT_EQ(job.map.CallCount(), bCreated ? 100U : 0U) << "allocation " << nth;
    }
    EXPECT_GE(thrownCount, 30) << "the elements alone are twenty";
}
