// A world in which the library runs: threads that are taken one at a time, and a clock that jumps.
//
// Simulation_Run runs a scenario as the first thread of such a world. Every operation of the simulated edition of the
// platform is a point at which the scheduler may go on with another thread, and so is every so-maniest basic block of
// the library's code that is compiled for it. The seed alone decides. When nobody can run, the clock jumps to the next
// deadline; when those who can run have long done nothing but look at what does not change, it jumps as well.
//
// Outside a run the operations do not switch, and a wait may only ask for what is there already.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// How the next thread is chosen.
enum class EPolicy
{
    Random,     // any that can run, at every point
    Bursts,     // any, but one keeps on running for a while: what others do meanwhile comes late
    Priorities, // the highest that can run; at a few points the running thread becomes the lowest
};
constexpr EPolicy allPolicies[] = {EPolicy::Random, EPolicy::Bursts, EPolicy::Priorities};

// What threads are made of. The same seed makes the same run on both.
enum class EStrand
{
    Fiber,  // stacks of one system thread: quick
    Thread, // system threads that hand a baton on: for debuggers
};

struct SSimulationSetup
{
    std::uint64_t seed = 1;
    EPolicy policy = EPolicy::Random;
    EStrand strand = EStrand::Fiber;
    bool bKeepTrace = false;
};

// Where a thread is when others may run.
enum class EPoint : std::uint8_t
{
    Start,      // its own beginning
    Create,     // of another thread
    End,        // its own
    Join,       // wait for another thread's end
    Lock,       // of a critical section
    EventWait,  // with a time of 0, too
    EventSet,   //
    EventReset, //
    Monitor,    // the worker base's requests and the band FIFOs
    Scenario,   // where the scenario wants one
    Block,      // a basic block of the library
};

const char* Point_Name(EPoint point); // as the predicate of a sentence

// One step of a run: which thread came to which point.
struct SStep
{
    std::uint16_t thread = 0;
    EPoint point = EPoint::Start;

    bool operator==(const SStep&) const = default;
};

struct SSimulationResult
{
    std::vector<std::string> findings;
    std::vector<SStep> trace; // if it was to be kept
    std::uint64_t traceHash = 0;
    std::uint64_t pointCount = 0;
    std::int64_t clockMs = 0;
    bool bAbandoned = false; // threads, and what is on their stacks, were left behind
};

SSimulationResult Simulation_Run(const SSimulationSetup& setup, const std::function<void()>& scenario);

// The operations of a world, for the platform and for scenarios. On its threads.

using SimulationCondition = std::function<bool()>; // looks, and changes nothing that another thread sees

constexpr unsigned long simulationWithoutLimit = 4294967295UL;

// Lets others run.
void Simulation_Point(EPoint point, const void* object);

// Lets others run, and then does `action` as one step: nothing else happens meanwhile.
void Simulation_Do(EPoint point, const void* object, const std::function<void()>& action);

// Waits up to `timeoutMs` until the condition holds, and then does `action`, if there is one, as one step. True if the
// condition held.
bool Simulation_Wait(EPoint point, const void* object, unsigned long timeoutMs, const SimulationCondition& condition,
                     const std::function<void()>& action = {});

// Something has changed that somebody may look at. To be said in an action.
void Simulation_Changed();

// Writes down what should not be, and goes on; or ends the run here and now.
void Simulation_Finding(const std::string& text);
[[noreturn]] void Simulation_Fatal(const std::string& text);

// The running thread; outside a run, null.
const void* Simulation_Self();

// True if some thread waits on this object now.
bool Simulation_IsWaitedFor(const void* object);

std::int64_t Simulation_NowMs();

// Another number out of this run's seed, in [0, end).
std::uint64_t Simulation_Random(std::uint64_t end);

// Threads. A thread that has ended is there until it is closed; one that is closed while it runs is a finding.
struct SSimulatedThread;
SSimulatedThread* SimulatedThread_Create(const std::string& name, const std::function<unsigned long()>& routine);
bool SimulatedThread_Wait(SSimulatedThread& thread, unsigned long timeoutMs);
unsigned long SimulatedThread_ExitCode(const SSimulatedThread& thread);
void SimulatedThread_Close(SSimulatedThread& thread);

// No point is one while such an object lives: what is done meanwhile is done at once, as far as threads and
// ThreadSanitizer can tell. For what a scenario notes down.
class CSimulationPause
{
public:
    CSimulationPause();
    ~CSimulationPause();
    CSimulationPause(const CSimulationPause&) = delete;
    CSimulationPause& operator=(const CSimulationPause&) = delete;
};
