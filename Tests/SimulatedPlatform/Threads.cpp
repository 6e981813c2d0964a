// What of the platform's contract blocks: locks, events, threads. All of it is the scheduler's.
#include "Platform/Thread/CreateThread.h"
#include "Platform/Thread/CustomCriticalSection.h"
#include "Platform/Thread/CustomManualResetEvent.h"
#include "Platform/Thread/TamBaseThread.h"

#include "PlainHook.h"
#include "PlainThread.h"
#include "SanitizerFiber.h"
#include "Simulation.h"

#include <functional>
#include <typeinfo>

namespace
{

// A worker's class, for whoever reads a finding.
std::string WorkerName_Get(void* parameter)
{
    return typeid(*static_cast<TamBaseThread*>(parameter)).name();
}

} // namespace

// Locks.

CCustomCriticalSection::~CCustomCriticalSection()
{
    if (m_depth != 0 || Simulation_IsWaitedFor(this))
    {
        Simulation_Fatal("a lock is destroyed while it is held or waited for");
    }
}

CEnterLeaveCriticalSection::CEnterLeaveCriticalSection(CCustomCriticalSection& section) : m_section(section)
{
    const void* const self = Simulation_Self();
    const auto IsFree = [&] { return section.m_depth == 0 || section.m_holder == self; };
    const auto Take = [&]
    {
        section.m_holder = self;
        ++section.m_depth;
        Sanitizer_Acquire(&section);
    };
    Simulation_Wait(EPoint::Lock, &section, simulationWithoutLimit, std::ref(IsFree), std::ref(Take));
}

CEnterLeaveCriticalSection::~CEnterLeaveCriticalSection()
{
    Sanitizer_Release(&m_section);
    --m_section.m_depth;
}

// Events. A new one is not set. Only a wait that came true is ordered behind what was done before Set.

CCustomManualResetEvent::CCustomManualResetEvent(bool) {}

CCustomManualResetEvent::~CCustomManualResetEvent()
{
    if (Simulation_IsWaitedFor(this))
    {
        Simulation_Fatal("an event is destroyed while a thread waits on it");
    }
}

bool CCustomManualResetEvent::Wait(unsigned long timeoutMs, int)
{
    return Simulation_Wait(
        EPoint::EventWait, this, timeoutMs, [this] { return m_bSet; }, [this] { Sanitizer_Acquire(this); });
}

void CCustomManualResetEvent::Set()
{
    Sanitizer_Release(this);
    State_Set(true);
}

void CCustomManualResetEvent::Reset()
{
    State_Set(false);
}

void CCustomManualResetEvent::State_Set(bool bSet)
{
    const auto Set = [&]
    {
        if (m_bSet != bSet)
        {
            m_bSet = bSet;
            Simulation_Changed();
        }
    };
    Simulation_Do(bSet ? EPoint::EventSet : EPoint::EventReset, this, std::ref(Set));
}

// Threads.

void* CreateThread(void* securityAttributes, std::size_t stackSize, unsigned long (*startRoutine)(void*),
                   void* parameter, std::uint32_t creationFlags, std::uint32_t* threadId)
{
    Simulation_Point(EPoint::Create, parameter);
    if (++SPlainHook::creationCount == SPlainHook::failingCreation || securityAttributes != nullptr || stackSize != 0 ||
        creationFlags != 0)
    {
        return nullptr;
    }
    *threadId = static_cast<std::uint32_t>(1000 + ++SPlainHook::startedCount);
    SSimulatedThread* const thread =
        SimulatedThread_Create(WorkerName_Get(parameter), [=] { return startRoutine(parameter); });
    Simulation_Point(EPoint::Create, parameter); // the thread may be there, and gone, before its creator knows
    return thread;
}

bool PlainThread_Wait(void* handle, unsigned timeoutMs)
{
    return SimulatedThread_Wait(*static_cast<SSimulatedThread*>(handle), timeoutMs);
}

unsigned long PlainThread_ExitCode(void* handle)
{
    return SimulatedThread_ExitCode(*static_cast<SSimulatedThread*>(handle));
}

void PlainThread_Close(void* handle)
{
    SimulatedThread_Close(*static_cast<SSimulatedThread*>(handle));
}
