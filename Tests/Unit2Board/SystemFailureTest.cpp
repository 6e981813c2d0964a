// What the converter does when the system gives it no thread or no memory for its array, or when a worker's start-up
// fails.
//
// The operations that fail belong to others, so this file puts its own in front of them: CreateThread and
// TamBaseThread::Prepare, by the ELF rule that the executable's symbol wins over the shared library's, on Windows
// through the executable's import table. All other tests of this executable run through these too, with nothing set to
// fail.
#include "Tests/Unit2Board/ConverterSupport.h"

#include <new>

#if defined(_WIN32)
#include "Tests/Support/ImportTable.h"
#else
#include <dlfcn.h>
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

#if defined(_WIN32)
using StartRoutine = LPTHREAD_START_ROUTINE;
using SecurityAttributes = LPSECURITY_ATTRIBUTES;
#else
using StartRoutine = ThreadStartRoutine;
using SecurityAttributes = void*;
#endif

std::atomic<int> s_failingCall{-1}; // the call of CreateThread that fails, from 0; -1: none
std::atomic<int> s_callCount{0};
std::atomic<int> s_startedCount{0};
std::atomic<int> s_endedCount{0};
std::atomic<const char*> s_failingName{"nobody"}; // the workers whose Prepare fails

struct SStart
{
    StartRoutine startRoutine;
    void* parameter;
};

unsigned long CountedRoutine(void* parameter)
{
    const std::unique_ptr<SStart> start(static_cast<SStart*>(parameter));
    const unsigned long exitCode = start->startRoutine(start->parameter);
    ++s_endedCount;
    return exitCode;
}

// Lets the given call of CreateThread fail, for the life of the object.
class CFailingThread
{
public:
    explicit CFailingThread(int call)
    {
        s_callCount = 0;
        s_startedCount = 0;
        s_endedCount = 0;
        s_failingCall = call;
    }
    ~CFailingThread() { s_failingCall = -1; }
    CFailingThread(const CFailingThread&) = delete;
    CFailingThread& operator=(const CFailingThread&) = delete;
};

class CFailingPrepare
{
public:
    explicit CFailingPrepare(const char* threadName) { s_failingName = threadName; }
    ~CFailingPrepare() { s_failingName = "nobody"; }
    CFailingPrepare(const CFailingPrepare&) = delete;
    CFailingPrepare& operator=(const CFailingPrepare&) = delete;
};

decltype(&CreateThread) NextCreateThread_Get();

HANDLE Thread_Create(SecurityAttributes securityAttributes, std::size_t stackSize, StartRoutine startRoutine,
                     void* parameter, DWORD creationFlags, DWORD* threadId)
{
    if (s_callCount++ == s_failingCall)
    {
        return nullptr;
    }
    auto start = std::make_unique<SStart>(SStart{startRoutine, parameter});
    const HANDLE thread =
        NextCreateThread_Get()(securityAttributes, stackSize, &CountedRoutine, start.get(), creationFlags, threadId);
    if (thread != nullptr)
    {
        static_cast<void>(start.release()); // the thread's
        ++s_startedCount;
    }
    return thread;
}

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
const auto s_pNextCreateThread = CImportTable(nullptr).Replace("CreateThread", &Thread_Create);
[[maybe_unused]] const auto s_pNextPrepare =
    CImportTable(nullptr).Replace("_ZN13TamBaseThread7PrepareEv", &Prepare_Instead);

decltype(&CreateThread) NextCreateThread_Get()
{
    return s_pNextCreateThread;
}

} // namespace

#else

HANDLE CreateThread(void* securityAttributes, std::size_t stackSize, ThreadStartRoutine startRoutine, void* parameter,
                    DWORD creationFlags, DWORD* threadId)
{
    return Thread_Create(securityAttributes, stackSize, startRoutine, parameter, creationFlags, threadId);
}

bool TamBaseThread::Prepare()
{
    return m_threadName != s_failingName.load();
}

namespace
{

decltype(&CreateThread) NextCreateThread_Get()
{
    static const auto next =
        reinterpret_cast<decltype(&CreateThread)>(dlsym(RTLD_NEXT, "_Z12CreateThreadPvmPFmS_ES_jPj"));
    return next;
}

} // namespace

#endif

TEST(SystemFailure, AGeneratorThatCannotBeStartedFailsCreateAndEndsThoseBeforeIt)
{
    for (const int generatorCount : {1, 2, 5})
    {
        for (int failing = 0; failing < generatorCount; ++failing)
        {
            SBandJob job(1, 50);
            const CLogCapture log;
            const CFailingThread noThread(failing);
            auto converter = std::make_unique<CUnit2Board>();
            EXPECT_FALSE(job.Create(*converter, generatorCount));
            EXPECT_EQ(s_callCount, failing + 1); // no further attempt
            EXPECT_EQ(s_startedCount, failing);
            EXPECT_EQ(s_endedCount, failing); // joined before Create returned
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
        const CFailingThread noThread(generatorCount);
        {
            CUnit2Board converter;
            EXPECT_FALSE(job.Create(converter, generatorCount));
            EXPECT_EQ(s_startedCount, generatorCount);
            EXPECT_EQ(s_endedCount, generatorCount);
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
    const CFailingThread count(-1);
    const CFailingPrepare noPrepare("CUnit2Board");
    SBandJob job(1, 50);
    {
        CUnit2Board converter;
        ASSERT_TRUE(job.Create(converter, 3));
        EXPECT_TRUE(converter.WaitExit(testPatienceMs));
        EXPECT_FALSE(converter.IsThreadSuccess());
        EXPECT_EQ(s_startedCount, 4);
        EXPECT_GE(s_endedCount, 3); // it may still be in its own last instructions
    }
    EXPECT_EQ(s_endedCount, 4);
    EXPECT_EQ(job.map.CallCount(), 0U);
    job.map.Scratches_Expect();
    EXPECT_THAT(Records_Text(log), ElementsAre("2 failure @Unit2Board:83 Prepare"));
}

TEST(SystemFailure, EveryThreadOfABandHasEndedWhenItsConverterHas)
{
    const CLogCapture log;
    const CFailingThread count(-1);
    SBandJob job(1, 50);
    CUnit2Board converter;
    ASSERT_TRUE(job.Create(converter, 5));
    EXPECT_TRUE(converter.WaitExit(testPatienceMs));
    EXPECT_EQ(s_startedCount, 6);
    EXPECT_EQ(s_endedCount, 6);
    EXPECT_THAT(log.Summary(), IsEmpty());
}
