// One thread of control of a simulated world: it runs when it is resumed, until it yields.
#pragma once

#include "Simulation.h"

#include <functional>
#include <memory>

class CStrand
{
public:
    CStrand() = default;
    CStrand(const CStrand&) = delete;
    CStrand& operator=(const CStrand&) = delete;
    virtual ~CStrand() = default; // after `body` has returned; before that, a strand is never destroyed

    // From outside: returns when the strand has yielded, or when its body has returned.
    virtual void Resume() = 0;

    // From inside. Exceptions that are being handled stay the strand's own.
    virtual void Yield() = 0;
};

std::unique_ptr<CStrand> Strand_Make(EStrand kind, std::function<void()> body);
