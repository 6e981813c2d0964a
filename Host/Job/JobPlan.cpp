// A run's numbers, worked out of the geometry.
#include "Host/Job/JobPlan.h"

#include <algorithm>

namespace
{

SPassPlan Pass_Make(const CJobPage& page, bool bLeftToRight)
{
    const SJob& job = page.Job();
    const SJobGeometry& geometry = page.Geometry();
    SPassPlan pass;
    pass.m_bLeftToRight = bLeftToRight;
    const std::int64_t back = job.m_bBidirectional ? geometry.m_swathCount / 2 : 0; // the first swath goes right
    pass.m_bands = (bLeftToRight ? geometry.m_swathCount - back : back) * page.PageCount();
    pass.m_lines = bLeftToRight ? geometry.m_lineCount_Left2Right : geometry.m_lineCount_Right2Left;
    pass.m_positions = Job_PassPositions(job, page.Width(), bLeftToRight);
    const int left = job.m_inkStripe.m_leftStripeWidth;
    const int right = job.m_inkStripe.m_rightStripeWidth;
    pass.m_firstZone = bLeftToRight ? left : right;
    pass.m_columns = page.Width();
    pass.m_lastZone = bLeftToRight ? right : left;
    pass.m_maxOffset = Job_MaxOffset(job, bLeftToRight);
    return pass;
}

// Board bands that the stage's output keeps waiting.
std::int64_t WaitingBands(const SJob& job)
{
    constexpr std::int64_t bandsPerMask = 3;
    switch (job.m_stageKind)
    {
    case EStageKind::InkStripe:
        return bandsPerMask * job.m_maskCount_1 * job.m_maskCount_2;
    case EStageKind::Base:
        return bandsPerMask;
    case EStageKind::OneFIFO:
        return 1;
    }
    return 1;
}

SMemoryPlan Memory_Make(const CJobPage& page)
{
    const SJob& job = page.Job();
    const SJobGeometry& geometry = page.Geometry();
    SMemoryPlan memory;
    memory.m_unitBandBytes = geometry.m_unitBytesPerLine * geometry.m_lineCount;
    memory.m_unitBands =
        std::int64_t{job.m_inputBands} * static_cast<std::int64_t>(page.Units().size()) +
        std::ranges::count_if(job.m_units, [&](const SJobUnit& unit) { return Job_HasStripes(job, unit); });
    memory.m_boardBandBytes = geometry.m_boardBytesPerLine * geometry.m_lineCount;
    constexpr std::int64_t bandsInHand = 2; // one that is being mapped, one that is being written
    memory.m_boardBands = std::min(WaitingBands(job) + bandsInHand, page.StepCount());
    constexpr std::int64_t bitsPerByte = 8;
    const std::int64_t rowBytes = (std::int64_t{page.Width()} * job.m_bitsPerPixel + bitsPerByte - 1) / bitsPerByte;
    memory.m_rowBytes =
        rowBytes * std::min(job.m_nozzles, page.Height()) * static_cast<std::int64_t>(page.Units().size());
    return memory;
}

} // namespace

SJobPlan Job_Plan(const CJobPage& page)
{
    const SJob& job = page.Job();
    const SJobGeometry& geometry = page.Geometry();
    SJobPlan plan;
    plan.m_pages = page.PageCount();
    plan.m_bands = page.StepCount();
    plan.m_lastBandRows = (page.Height() - 1) % job.m_nozzles + 1;
    for (const bool bLeftToRight : {true, false})
    {
        if (bLeftToRight || job.m_bBidirectional)
        {
            plan.m_passes.push_back(Pass_Make(page, bLeftToRight));
            plan.m_lines += plan.m_passes.back().m_bands * plan.m_passes.back().m_lines;
        }
    }
    plan.m_bytes = plan.m_lines * geometry.m_boardBytesPerLine;
    plan.m_memory = Memory_Make(page);
    const SMapClass& map = MapClass_Get(job.m_map.m_class);
    const int width = job.m_dpOption.m_printerDataWidth;
    plan.m_unitRoom = MapClass_UnitCount(job.m_map, width);
    plan.m_planes = map.m_bPlanePair ? 2 : 1;
    plan.m_frameBits = static_cast<int>(MapClass_FrameBits(map.m_class, width));
    plan.m_frames = geometry.m_boardWidth / plan.m_frameBits;
    return plan;
}
