// The jobs: few units, few steps, bands below and above what a converter has in flight.
#include "SimulatedJob.h"

#include "DataMap/PrintUnitDataMap_5.h"
#include "Scenario.h"

#include <atomic>
#include <stdexcept>

namespace
{

constexpr int jobCount = 24;

// Job `number`: its units, steps and generators follow from the number, its pixels are noise.
SInkJob InkJob_Make(int number)
{
    std::mt19937 random(static_cast<unsigned>(number));
    SInkJob job;
    job.option.m_dataMapStyle = SMapStyle::FramePerPixel;
    job.option.m_printerDataWidth = 16;
    job.twin = {ETwinStyle::Style_5, 1, 16, 1};
    job.lineGeneratorCount = 1 + number % 4;
    job.stripes.bandWidth = 9 + number % 3 * 7;
    job.stripes.jobWidth = number % 6 == 0 ? 40 : 2 + number;
    job.stripes.xMaxOffset_Left2Right = 2;
    job.stripes.xMaxOffset_Right2Left = 3;
    const bool bStripes = number % 2 == 0;
    if (bStripes)
    {
        job.stripes.leftStripeWidth = 2;
        job.stripes.rightStripeWidth = 2;
        job.stripes.unitPitch = 1;
        job.stripes.unitPositionCount = 2;
    }
    const int inputCount = 1 + number % 3;
    const int unitCount = inputCount + (bStripes ? 1 : 0);
    for (int id = 0; id < unitCount; ++id)
    {
        SModelUnit unit{id, 1 + id % 2, id % 2, id % 2, id % 2, true, std::vector<unsigned char>(1)};
        unit.color[0] = static_cast<unsigned char>(random());
        job.stripes.units.push_back(unit);
    }
    const int stepCount = 1 + number % 4;
    for (int step = 0; step < stepCount; ++step)
    {
        SStepImage bands;
        for (int unit = 0; unit < inputCount; ++unit)
        {
            bands.push_back(Band_Noise(job, random, (step + unit) % unitCount, step % 2));
            bands.back().header.bSkip = false;
        }
        job.steps.push_back(bands);
    }
    return job;
}

std::vector<SSimulatedJob> Jobs_Make()
{
    std::vector<SSimulatedJob> jobs;
    for (int number = 0; number < jobCount; ++number)
    {
        SSimulatedJob made;
        made.job = InkJob_Make(number);
        SInkJob plain = made.job;
        plain.stripes.leftStripeWidth = plain.stripes.rightStripeWidth = 0;
        for (int step = 0; step < static_cast<int>(made.job.steps.size()); ++step)
        {
            made.boards.push_back(Board_Expected(made.job, step));
            made.boardsWithoutStripes.push_back(Board_Expected(plain, step));
        }
        jobs.push_back(std::move(made));
    }
    return jobs;
}

class CFaultyMap : public CPrintUnitDataMap_5
{
public:
    CFaultyMap(EMapFault fault, int atCall) : m_fault(fault), m_callsLeft(atCall) { CPrintUnitDataMap_5::Init(1, 16); }

    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override
    {
        if (m_fault == EMapFault::Slow)
        {
            Sleep(Simulation_Random(4) == 0 ? Simulation_Random(slowLineMs) : 0);
        }
        if (m_fault == EMapFault::Refuses || m_fault == EMapFault::Throws)
        {
            if (--m_callsLeft == 0)
            {
                Fault_Make();
                return false;
            }
        }
        return CPrintUnitDataMap_5::MapData_Line(param, src, dst, dstByteCount);
    }

    void* CustomParam_Create() const override
    {
        if (m_fault == EMapFault::ScratchThrows && --m_callsLeft == 0)
        {
            throw std::runtime_error("no scratch object");
        }
        return nullptr;
    }

private:
    void Fault_Make() const
    {
        if (m_fault == EMapFault::Throws)
        {
            throw std::runtime_error("no line");
        }
    }

    EMapFault m_fault;
    mutable std::atomic<int> m_callsLeft;
};

} // namespace

const SSimulatedJob& Job_Apply()
{
    static const auto& jobs = *new std::vector<SSimulatedJob>(Jobs_Make());
    static CConfigGuard config;
    const auto& chosen = jobs[Simulation_Random(jobs.size())];
    Job_Configure(config, chosen.job);
    return chosen;
}

std::unique_ptr<CPrintUnitDataMap_Base> FaultyMap_Make(EMapFault fault, int atCall)
{
    return std::make_unique<CFaultyMap>(fault, atCall);
}
