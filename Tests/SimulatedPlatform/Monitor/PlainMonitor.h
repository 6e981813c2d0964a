// State that several threads share, as the simulated edition guards it: the scheduler knows who waits for what.
//
// A wait that came true is ordered behind the changes before it; a mere look is ordered behind nothing.
#pragma once

#include "SanitizerFiber.h"
#include "Simulation.h"

#include <functional>

class CPlainMonitor
{
public:
    static constexpr unsigned long withoutLimit = simulationWithoutLimit;

    template<class TChange>
    void Change(TChange change)
    {
        Simulation_Do(EPoint::Monitor, this, [&] { Change_Now(change); });
    }

    template<class TLook>
    auto Look(TLook look)
    {
        decltype(look()) seen{};
        Simulation_Do(EPoint::Monitor, this, [&] { seen = look(); });
        return seen;
    }

    template<class TCondition>
    bool Wait(TCondition condition, unsigned long timeoutMs)
    {
        return Simulation_Wait(EPoint::Monitor, this, timeoutMs, std::ref(condition),
                               [this] { Sanitizer_Acquire(this); });
    }

    template<class TCondition, class TChange>
    bool WaitAndChange(TCondition condition, unsigned long timeoutMs, TChange change)
    {
        const auto Act = [&]
        {
            Sanitizer_Acquire(this);
            Change_Now(change);
        };
        return Simulation_Wait(EPoint::Monitor, this, timeoutMs, std::ref(condition), Act);
    }

private:
    template<class TChange>
    void Change_Now(TChange& change)
    {
        change();
        Simulation_Changed();
        Sanitizer_Release(this);
    }
};
