// The scheduler: whose turn it is, what time it is, and what is wrong.
#include "Simulation.h"

#include "SanitizerFiber.h"
#include "Strand.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>

struct SSimulatedThread
{
    int number = 0;
    std::string name;
    std::function<unsigned long()> routine;
    std::unique_ptr<CStrand> strand;

    // What it waits for; null: it can run.
    const SimulationCondition* condition = nullptr;
    std::int64_t deadline = 0; // ms
    bool bLong = false;
    EPoint point = EPoint::Start;
    const void* object = nullptr;

    bool bEnded = false;
    bool bClosed = false;
    unsigned long exitCode = 0;

    std::int64_t priority = 0;
    std::uint64_t epoch = 0; // the last change that it has seen
    int quietCount = 0;      // points since then
};

namespace
{

using SThread = SSimulatedThread;

constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

// A thread that has passed so many points without any change is taken for one that only looks. More than a thread
// passes with a line buffer of 20 elements before one of its events changes.
constexpr int quietLimit = 128;

// After so many jumps of the clock without any change, jumps grow, so that an hour of fruitless looking is short. They
// pass short waits, never the end of a long one.
constexpr int fruitlessLimit = 32;
constexpr std::int64_t firstLeapMs = 100;
constexpr std::int64_t longWaitMs = 10'000;

constexpr std::uint64_t pointLimit = 3'000'000; // a run that is longer does not end
constexpr std::size_t findingLimit = 8;

// Splitmix64.
class CRandom
{
public:
    explicit CRandom(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t Next()
    {
        m_state += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = m_state;
        mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EBU;
        return mixed ^ mixed >> 31;
    }
    std::uint64_t Below(std::uint64_t end) { return Next() % end; }

private:
    std::uint64_t m_state;
};

// Blocks until the next one that is a point. Of the process, since the compiler's calls have to be quick.
std::int64_t g_blocksLeft = never;

// The scheduler is at work. What it calls may be a copy of a template's operation that was compiled with points in it.
bool g_bInside = false;

// From a thread's entering the scheduler to its going on.
class CInside
{
public:
    CInside() : m_bBefore(std::exchange(g_bInside, true)) {}
    ~CInside() { g_bInside = m_bBefore; }
    CInside(const CInside&) = delete;
    CInside& operator=(const CInside&) = delete;

private:
    CSanitizerUnseen m_unseen;
    bool m_bBefore;
};

class CWorld
{
public:
    explicit CWorld(const SSimulationSetup& setup);

    SSimulationResult Run(const std::function<void()>& scenario);

    SThread& Thread_Create(const std::string& name, const std::function<unsigned long()>& routine);
    void Point(EPoint point, const void* object);
    bool Wait(EPoint point, const void* object, unsigned long timeoutMs, const SimulationCondition& condition);
    void Changed();
    void Finding(const std::string& text);
    [[noreturn]] void Abandon();
    bool IsWaitedFor(const void* object) const;
    void Blocks_Draw();

    SThread* m_current = nullptr;
    std::int64_t m_nowMs = 0;
    int m_pauseDepth = 0;
    CRandom m_scenarioRandom; // what a scenario does is the same whatever the scheduler draws

private:
    void Thread_Run(SThread& self);
    void Thread_End(SThread& self);
    void Switch();
    SThread* Next_Choose();
    SThread* Runnable_Take();
    bool EndsEarly(const SThread& thread);
    bool IsQuiet(const SThread& thread) const;
    void Quiet_Count(EPoint point);
    void Priority_Change();
    void Clock_Jump(std::int64_t nearest, std::int64_t nearestLong);
    std::string Threads_Describe() const;

    SSimulationSetup m_setup;
    SSimulationResult m_result;
    CRandom m_random;
    std::vector<std::unique_ptr<SThread>> m_threads;
    std::vector<SThread*> m_runnable;
    SThread* m_next = nullptr;
    bool m_bAbandoned = false;

    std::uint64_t m_epoch = 1;
    int m_fruitlessJumps = 0;
    std::int64_t m_leapMs = 0;

    // Bursts.
    std::uint64_t m_longestBurst;
    std::uint64_t m_burstLeft = 0;

    // Priorities.
    std::uint64_t m_longestStretch;
    std::uint64_t m_pointsToChange;
    std::uint64_t m_changesLeft;
    std::int64_t m_lowestPriority = 0;

    std::uint64_t m_blockMean;
    int m_earlyLeft; // waits of the platform that may end early, as the contract allows
};

CWorld* g_world = nullptr;

// The world that is run, unless its threads may not be switched now.
CWorld* World_Get()
{
    return g_world != nullptr && g_world->m_current != nullptr && g_world->m_pauseDepth == 0 ? g_world : nullptr;
}

CWorld::CWorld(const SSimulationSetup& setup)
    : m_scenarioRandom(setup.seed * 2 + 1),
      m_setup(setup),
      m_random(setup.seed * 2),
      m_longestBurst(std::uint64_t{8} << 2 * m_random.Below(4)),
      m_longestStretch(std::uint64_t{16} << m_random.Below(9)),
      m_pointsToChange(1 + m_random.Below(m_longestStretch)),
      m_changesLeft(1 + m_random.Below(5)),
      m_blockMean(std::uint64_t{1} << 2 * m_random.Below(5)),
      m_earlyLeft(setup.seed % 4 == 3 ? 30 : 0)
{
}

SSimulationResult CWorld::Run(const std::function<void()>& scenario)
{
    g_world = this;
    Blocks_Draw();
    Thread_Create("scenario",
                  [&scenario]
                  {
                      scenario();
                      return 0UL;
                  });
    m_next = m_threads.front().get();
    while (m_next != nullptr)
    {
        m_current = std::exchange(m_next, nullptr);
        m_current->strand->Resume();
    }
    for (const auto& thread : m_threads)
    {
        Sanitizer_Acquire(thread.get()); // the next run comes behind all of this one
    }
    m_current = nullptr;
    g_world = nullptr;
    g_bInside = false;
    g_blocksLeft = never;
    if (m_bAbandoned)
    {
        for (auto& thread : m_threads)
        {
            static_cast<void>(thread.release()); // its stack is in use for ever
        }
    }
    m_result.clockMs = m_nowMs;
    m_result.bAbandoned = m_bAbandoned;
    return std::move(m_result);
}

// Threads.

SThread& CWorld::Thread_Create(const std::string& name, const std::function<unsigned long()>& routine)
{
    auto thread = std::make_unique<SThread>();
    SThread& self = *thread;
    self.number = static_cast<int>(m_threads.size());
    self.name = name;
    self.routine = routine;
    self.priority = static_cast<std::int64_t>(m_random.Below(1'000'000));
    self.strand = Strand_Make(m_setup.strand, [this, &self] { Thread_Run(self); });
    m_threads.push_back(std::move(thread));
    Changed();
    return self;
}

void CWorld::Thread_Run(SThread& self)
{
    g_bInside = false;
    try
    {
        Sanitizer_Acquire(&self.routine);
        self.exitCode = self.routine();
    }
    catch (...)
    {
        Finding("an exception leaves thread " + self.name);
    }
    Simulation_Point(EPoint::End, nullptr);
    const CInside inside;
    Thread_End(self);
}

void CWorld::Thread_End(SThread& self)
{
    self.routine = nullptr;
    self.bEnded = true;
    Sanitizer_Release(&self);
    Changed();
    const auto isLeft = [&](const auto& other) { return !other->bEnded || (!other->bClosed && other.get() != &self); };
    if (self.number == 0 && std::any_of(m_threads.begin(), m_threads.end(), isLeft))
    {
        Finding("the scenario ends before its threads, or without closing them:" + Threads_Describe());
        m_bAbandoned = true;
        return;
    }
    m_next = self.number == 0 ? nullptr : Next_Choose();
}

// Points and waits.

void CWorld::Point(EPoint point, const void* object)
{
    SThread& self = *m_current;
    self.point = point;
    self.object = object;
    const SStep step{static_cast<std::uint16_t>(self.number), point};
    m_result.traceHash = (m_result.traceHash ^ (step.thread * 16U + static_cast<unsigned>(point))) * 0x100000001B3U;
    if (m_setup.bKeepTrace)
    {
        m_result.trace.push_back(step);
    }
    if (++m_result.pointCount >= pointLimit)
    {
        Finding("the run does not end:" + Threads_Describe());
        Abandon();
    }
    Quiet_Count(point);
    if (m_setup.policy == EPolicy::Priorities && m_changesLeft > 0 && --m_pointsToChange == 0)
    {
        Priority_Change();
    }
    Switch();
}

bool CWorld::Wait(EPoint point, const void* object, unsigned long timeoutMs, const SimulationCondition& condition)
{
    Point(point, object);
    if (timeoutMs == 0 || condition())
    {
        return condition();
    }
    SThread& self = *m_current;
    const auto time = static_cast<std::int64_t>(timeoutMs);
    self.condition = &condition;
    self.deadline = timeoutMs == simulationWithoutLimit ? never : m_nowMs + time;
    self.bLong = time >= longWaitMs;
    Switch();
    self.condition = nullptr;
    self.epoch = 0;
    return condition();
}

// Goes on with whomever the policy chooses.
void CWorld::Switch()
{
    SThread* const next = Next_Choose();
    if (next != m_current)
    {
        m_next = next;
        m_current->strand->Yield();
        g_bInside = true; // whatever the thread before this one did last
    }
}

SThread* CWorld::Next_Choose()
{
    for (;;)
    {
        m_runnable.clear();
        bool bAllQuiet = true;
        std::int64_t nearest = never;
        std::int64_t nearestLong = never;
        for (const auto& thread : m_threads)
        {
            if (thread->bEnded)
            {
                continue;
            }
            if (EndsEarly(*thread))
            {
                thread->deadline = m_nowMs;
            }
            if (thread->condition == nullptr || thread->deadline <= m_nowMs || (*thread->condition)())
            {
                m_runnable.push_back(thread.get());
                bAllQuiet = bAllQuiet && IsQuiet(*thread);
            }
            else if (thread->deadline != never)
            {
                nearest = std::min(nearest, thread->deadline);
                nearestLong = thread->bLong ? std::min(nearestLong, thread->deadline) : nearestLong;
            }
        }
        if (!m_runnable.empty() && (!bAllQuiet || nearest == never))
        {
            return Runnable_Take();
        }
        if (nearest == never)
        {
            Finding("deadlock: nobody can run:" + Threads_Describe());
            Abandon();
        }
        Clock_Jump(nearest, nearestLong);
    }
}

// Seldom, and never a join or a lock.
bool CWorld::EndsEarly(const SThread& thread)
{
    if (m_earlyLeft == 0 || thread.condition == nullptr || thread.deadline == never || thread.deadline <= m_nowMs ||
        (thread.point != EPoint::EventWait && thread.point != EPoint::Monitor) || m_random.Below(100) != 0)
    {
        return false;
    }
    --m_earlyLeft;
    return true;
}

SThread* CWorld::Runnable_Take()
{
    const auto Any = [&] { return m_runnable[m_random.Below(m_runnable.size())]; };
    switch (m_setup.policy)
    {
    case EPolicy::Bursts:
        if (m_burstLeft > 0 && std::find(m_runnable.begin(), m_runnable.end(), m_current) != m_runnable.end())
        {
            --m_burstLeft;
            return m_current;
        }
        m_burstLeft = m_random.Below(m_longestBurst);
        return Any();
    case EPolicy::Priorities:
        return *std::max_element(m_runnable.begin(), m_runnable.end(),
                                 [](const SThread* a, const SThread* b) { return a->priority < b->priority; });
    default:
        return Any();
    }
}

// Changes, and threads that see none.

void CWorld::Changed()
{
    ++m_epoch;
    m_fruitlessJumps = 0;
    m_leapMs = 0;
}

bool CWorld::IsQuiet(const SThread& thread) const
{
    return thread.epoch == m_epoch && thread.quietCount >= quietLimit;
}

// Who has only looked for long lets the others go first.
void CWorld::Quiet_Count(EPoint point)
{
    SThread& self = *m_current;
    if (point == EPoint::Block)
    {
        return;
    }
    self.quietCount = self.epoch == m_epoch ? self.quietCount + 1 : 0;
    self.epoch = m_epoch;
    if (self.quietCount >= quietLimit)
    {
        m_burstLeft = 0;
        self.priority = --m_lowestPriority;
    }
}

void CWorld::Priority_Change()
{
    --m_changesLeft;
    m_pointsToChange = 1 + m_random.Below(m_longestStretch);
    m_current->priority = --m_lowestPriority;
}

void CWorld::Clock_Jump(std::int64_t nearest, std::int64_t nearestLong)
{
    if (++m_fruitlessJumps > fruitlessLimit)
    {
        m_leapMs = std::max(firstLeapMs, m_leapMs * 2);
    }
    m_nowMs = std::max(nearest, std::min(m_nowMs + m_leapMs, nearestLong));
    ++m_epoch; // those who only look may look again
}

void CWorld::Blocks_Draw()
{
    // The largest mean stands for none at all.
    g_blocksLeft = m_blockMean == 256 ? never : static_cast<std::int64_t>(1 + m_random.Below(2 * m_blockMean + 1));
}

// Findings.

void CWorld::Finding(const std::string& text)
{
    if (m_result.findings.size() < findingLimit)
    {
        m_result.findings.push_back(text);
    }
}

void CWorld::Abandon()
{
    m_bAbandoned = true;
    m_next = nullptr;
    for (;;)
    {
        m_current->strand->Yield();
    }
}

bool CWorld::IsWaitedFor(const void* object) const
{
    return std::any_of(m_threads.begin(), m_threads.end(),
                       [&](const auto& thread)
                       { return !thread->bEnded && thread->condition != nullptr && thread->object == object; });
}

std::string CWorld::Threads_Describe() const
{
    std::string text;
    for (const auto& thread : m_threads)
    {
        text += "\n    thread " + std::to_string(thread->number) + " (" + thread->name + ") ";
        if (thread->bEnded)
        {
            text += thread->bClosed ? "has ended" : "has ended and is not closed";
            continue;
        }
        text += Point_Name(thread->point);
        if (thread->condition != nullptr && thread->deadline != never)
        {
            text += ", until " + std::to_string(thread->deadline) + " ms";
        }
    }
    return text + "\n    at " + std::to_string(m_nowMs) + " ms";
}

} // namespace

const char* Point_Name(EPoint point)
{
    constexpr const char* names[] = {"begins",
                                     "creates a thread",
                                     "ends",
                                     "joins a thread",
                                     "takes a lock",
                                     "waits on an event",
                                     "sets an event",
                                     "resets an event",
                                     "is in the platform",
                                     "is in the scenario",
                                     "computes"};
    return names[static_cast<std::size_t>(point)];
}

SSimulationResult Simulation_Run(const SSimulationSetup& setup, const std::function<void()>& scenario)
{
    CWorld world(setup);
    return world.Run(scenario);
}

void Simulation_Point(EPoint point, const void* object)
{
    if (CWorld* const world = World_Get(); world != nullptr)
    {
        const CInside inside;
        world->Point(point, object);
    }
}

void Simulation_Do(EPoint point, const void* object, const std::function<void()>& action)
{
    const CInside inside;
    if (CWorld* const world = World_Get(); world != nullptr)
    {
        world->Point(point, object);
    }
    action();
}

bool Simulation_Wait(EPoint point, const void* object, unsigned long timeoutMs, const SimulationCondition& condition,
                     const std::function<void()>& action)
{
    const CInside inside;
    CWorld* const world = World_Get();
    const bool bHolds = world != nullptr ? world->Wait(point, object, timeoutMs, condition) : condition();
    if (!bHolds && world == nullptr && timeoutMs == simulationWithoutLimit)
    {
        Simulation_Fatal("a wait without limit where nobody else can run");
    }
    if (bHolds && action)
    {
        action();
    }
    return bHolds;
}

void Simulation_Changed()
{
    if (g_world != nullptr)
    {
        g_world->Changed();
    }
}

void Simulation_Finding(const std::string& text)
{
    const CInside inside;
    if (g_world != nullptr)
    {
        g_world->Finding(text);
        return;
    }
    std::fprintf(stderr, "outside a run: %s\n", text.c_str());
    std::abort();
}

void Simulation_Fatal(const std::string& text)
{
    Simulation_Finding(text);
    g_world->Abandon();
}

const void* Simulation_Self()
{
    return g_world == nullptr ? nullptr : g_world->m_current;
}

bool Simulation_IsWaitedFor(const void* object)
{
    return g_world != nullptr && g_world->IsWaitedFor(object);
}

std::int64_t Simulation_NowMs()
{
    return g_world == nullptr ? 0 : g_world->m_nowMs;
}

std::uint64_t Simulation_Random(std::uint64_t end)
{
    return g_world->m_scenarioRandom.Below(end);
}

SSimulatedThread* SimulatedThread_Create(const std::string& name, const std::function<unsigned long()>& routine)
{
    const CInside inside;
    SThread& thread = g_world->Thread_Create(name, routine);
    Sanitizer_Release(&thread.routine);
    return &thread;
}

bool SimulatedThread_Wait(SSimulatedThread& thread, unsigned long timeoutMs)
{
    if (!Simulation_Wait(EPoint::Join, &thread, timeoutMs, [&thread] { return thread.bEnded; }))
    {
        return false;
    }
    Sanitizer_Acquire(&thread);
    return true;
}

unsigned long SimulatedThread_ExitCode(const SSimulatedThread& thread)
{
    return thread.exitCode;
}

void SimulatedThread_Close(SSimulatedThread& thread)
{
    if (!thread.bEnded)
    {
        Simulation_Fatal("a worker is destroyed while its thread runs: " + thread.name);
    }
    thread.bClosed = true;
}

CSimulationPause::CSimulationPause()
{
    Sanitizer_Unseen_Begin();
    if (g_world != nullptr)
    {
        ++g_world->m_pauseDepth;
    }
}

CSimulationPause::~CSimulationPause()
{
    if (g_world != nullptr)
    {
        --g_world->m_pauseDepth;
    }
    Sanitizer_Unseen_End();
}

// What the compiler calls in every basic block of what is compiled with -fsanitize-coverage=trace-pc.
extern "C" void __sanitizer_cov_trace_pc() // NOLINT(bugprone-reserved-identifier): the compiler's name
{
    if (--g_blocksLeft > 0 || g_bInside)
    {
        return;
    }
    g_bInside = true; // before anything else is called
    if (CWorld* const world = World_Get(); world != nullptr)
    {
        const CSanitizerUnseen unseen;
        world->Blocks_Draw();
        world->Point(EPoint::Block, nullptr);
    }
    else
    {
        g_blocksLeft = 1; // a pause: the next block behind it
    }
    g_bInside = false;
}
