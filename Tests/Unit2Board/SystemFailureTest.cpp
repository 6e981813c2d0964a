// What the converter does when the system gives it no thread or no memory for its array, or when a worker's start-up
// fails.
//
// The operations that fail belong to others, so this executable has its own in front of them: CreateThread, and here
// TamBaseThread::Prepare, by the ELF rule that the executable's symbol wins over the shared library's, on Windows
// through the executable's import table. All other tests of this executable run through these too, with nothing set to
// fail.
#include "Tests/Support/ThreadFailure.h"
#include "Tests/Unit2Board/ConverterSupport.h"

#include <new>

#if defined(_WIN32)
#include "Tests/Support/ImportTable.h"
#endif

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

// No such allocation fails unless a test says so.
std::atomic<bool> s_bArrayFails{false};

} // namespace

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return s_bArrayFails ? nullptr : ::operator new[](size);
}

TEST(SystemFailure, WithoutMemoryForTheElementsNothingIsStarted)
{
    const CLogCapture log;
    SBandJob job(1, 10);
    CUnit2Board converter;
    s_bArrayFails = true;
    const bool bCreated = job.Create(converter, 2);
    s_bArrayFails = false;
    EXPECT_FALSE(bCreated);
    EXPECT_THAT(Records_Text(log),
                ElementsAre("2 Allocate memory failure. size = 20 @SBufferData:176 New_ElementBuffer",
                            "2 failure @SBufferData:74 AllocateBuffer",
                            "2 failure @Unit2Board:162 Create_LineGenerator", "2 failure @Unit2Board:50 Create"));
    EXPECT_EQ(SAccess::Generators(converter), nullptr);
    converter.Stop();
    EXPECT_TRUE(converter.WaitExit(0));
}

namespace
{

std::atomic<const char*> s_failingName{"nobody"}; // the workers whose Prepare fails

class CFailingPrepare
{
public:
    explicit CFailingPrepare(const char* threadName) { s_failingName = threadName; }
    ~CFailingPrepare() { s_failingName = "nobody"; }
    CFailingPrepare(const CFailingPrepare&) = delete;
    CFailingPrepare& operator=(const CFailingPrepare&) = delete;
};

} // namespace

#if defined(_WIN32)

namespace
{

struct SWorkerName : TamBaseThread
{
    static const std::string& Get(const TamBaseThread& worker) { return worker.*(&SWorkerName::m_threadName); }
};

bool Prepare_Instead(TamBaseThread* worker)
{
    return SWorkerName::Get(*worker) != s_failingName.load();
}

// Before main, while there is one thread.
[[maybe_unused]] const auto s_pNextPrepare =
    CImportTable(nullptr).Replace("_ZN13TamBaseThread7PrepareEv", &Prepare_Instead);

} // namespace

#else

bool TamBaseThread::Prepare()
{
    return m_threadName != s_failingName.load();
}

#endif

TEST(SystemFailure, AGeneratorThatCannotBeStartedFailsCreateAndEndsThoseBeforeIt)
{
    for (const int generatorCount : {1, 2, 5})
    {
        for (int failing = 0; failing < generatorCount; ++failing)
        {
            SBandJob job(1, 50);
            const CLogCapture log;
            const CThreadFailure noThread(failing + 1);
            auto converter = std::make_unique<CUnit2Board>();
            EXPECT_FALSE(job.Create(*converter, generatorCount));
            EXPECT_EQ(noThread.Creation_Count(), failing + 1); // no further attempt
            EXPECT_EQ(noThread.Started_Count(), failing);
            EXPECT_EQ(CThreadFailure::Running_Count(), 0); // joined before Create returned
            EXPECT_THAT(
                Records_Text(log),
                ElementsAre("2 Start thread error. name = CUnit2Board_Line @KelBaseThread:55 CustomCreateThread",
                            "2 failure @Unit2Board_Line:42 Create", "2 failure @Unit2Board:174 Create_LineGenerator",
                            "2 failure @Unit2Board:50 Create"));
            for (int i = 0; i < generatorCount; ++i)
            {
                EXPECT_EQ(SAccess::Generators(*converter)[i] != nullptr, i < failing);
            }
            converter->Stop();
            EXPECT_TRUE(converter->WaitExit(0));
            converter.reset();
            EXPECT_EQ(job.map.CallCount(), 0U);
            job.map.Scratches_Expect();
        }
    }
}

TEST(SystemFailure, WithoutAThreadOfItsOwnCreateFailsAndEndsAllGenerators)
{
    for (const int generatorCount : {0, 1, 4})
    {
        SBandJob job(1, 50);
        const CLogCapture log;
        const CThreadFailure noThread(generatorCount + 1);
        {
            CUnit2Board converter;
            EXPECT_FALSE(job.Create(converter, generatorCount));
            EXPECT_EQ(noThread.Started_Count(), generatorCount);
            EXPECT_EQ(CThreadFailure::Running_Count(), 0);
            EXPECT_TRUE(converter.WaitExit(0));
        }
        EXPECT_THAT(Records_Text(log),
                    ElementsAre("2 Start thread error. name = CUnit2Board @KelBaseThread:55 CustomCreateThread",
                                "2 failure @Unit2Board:52 Create"));
        EXPECT_EQ(job.map.CallCount(), 0U);
        job.map.Scratches_Expect();
    }
}

TEST(SystemFailure, AGeneratorWhoseStartUpFailsEndsWithFinallyAndTheBandIsNeverFinished)
{
    const CLogCapture log;
    const CFailingPrepare noPrepare("CUnit2Board_Line");
    SBandJob job(1, 50);
    CWatchedConverter converter;
    ASSERT_TRUE(job.Create(converter, 1));
    EXPECT_TRUE(SAccess::Generators(converter)[0]->WaitExit(testPatienceMs));
    EXPECT_FALSE(SAccess::Generators(converter)[0]->IsThreadSuccess());
    EXPECT_EQ(job.map.ScratchCount(), 0U);
    EXPECT_EQ(job.map.NullReleaseCount(), 1);
    EXPECT_FALSE(converter.WaitExit(20));
    converter.Stop();
    EXPECT_TRUE(converter.WaitExit(withoutLimit));
    EXPECT_THAT(Records_Text(log),
                ElementsAre("2 failure @Unit2Board_Line:76 Prepare", "2 failure @Unit2Board:227 WaitExit"));
}

TEST(SystemFailure, AConverterWhoseStartUpFailsJoinsItsGeneratorsBeforeItEnds)
{
    const CLogCapture log;
    const CThreadFailure none(0);
    const CFailingPrepare noPrepare("CUnit2Board");
    SBandJob job(1, 50);
    {
        CUnit2Board converter;
        ASSERT_TRUE(job.Create(converter, 3));
        EXPECT_TRUE(converter.WaitExit(testPatienceMs));
        EXPECT_FALSE(converter.IsThreadSuccess());
        EXPECT_EQ(none.Started_Count(), 4);
        EXPECT_EQ(CThreadFailure::Running_Count(), 0);
    }
    EXPECT_EQ(CThreadFailure::Running_Count(), 0);
    EXPECT_EQ(job.map.CallCount(), 0U);
    job.map.Scratches_Expect();
    EXPECT_THAT(Records_Text(log), ElementsAre("2 failure @Unit2Board:83 Prepare"));
}

TEST(SystemFailure, EveryThreadOfABandHasEndedWhenItsConverterHas)
{
    const CLogCapture log;
    const CThreadFailure none(0);
    SBandJob job(1, 50);
    CUnit2Board converter;
    ASSERT_TRUE(job.Create(converter, 5));
    EXPECT_TRUE(converter.WaitExit(testPatienceMs));
    EXPECT_EQ(none.Started_Count(), 6);
    EXPECT_EQ(CThreadFailure::Running_Count(), 0);
    EXPECT_THAT(log.Summary(), IsEmpty());
}
