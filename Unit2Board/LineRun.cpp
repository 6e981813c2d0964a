// The length of a run, from the band's size.
#include "Unit2Board/LineRun.h"

#include "DataMap/Plan/MapPlan.h"
#include "Platform/BandData/BandData.h"

#include <algorithm>

namespace
{

constexpr int largestRun = 512 * 1024; // bytes of board data: a tenth of a millisecond, so that threads seldom meet
constexpr int runsPerGenerator = 8;    // at least, so that all generators end at about the same time

} // namespace

int LineRun_Get(const CBandData& dstBand, const CPrintUnitDataMap_Base& dataMap, int lineGeneratorCount)
{
    if (lineGeneratorCount < 1 || !MapStyle_IsOwn(dataMap))
    {
        return 1;
    }
    const int byBytes = largestRun / std::max(dstBand.m_bytesPerLine, 1);
    const int byLines = dstBand.m_height / runsPerGenerator / lineGeneratorCount;
    return std::max(std::min(byBytes, byLines), 1);
}
