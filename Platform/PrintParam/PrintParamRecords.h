// The records of the print parameters. Their words stand in the order that the pipeline's libraries agreed on; all are
// 32-bit unless said otherwise.
#pragma once

#include "Platform/BandData/BandData.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

// The one drop size that 1-bit data prints with on a printer that takes 2-bit data.
enum class EDotSizeMode : std::int32_t
{
    None = 0,
    Small = 1,
    Middle = 2,
    Big = 3,
};

// A job as the rasteriser made it.
struct SRipJobInfo
{
    std::int32_t m_width = 0;        // pixels across the page
    std::int32_t m_height = 0;       // pixels down the page
    std::int32_t m_bitsPerPixel = 0; // bits per pixel of every separation: 1 or 2
};
static_assert(offsetof(SRipJobInfo, m_bitsPerPixel) == 2 * 4);

// What the job says of ink stripes.
struct SInkStripeParam_Pixel
{
    std::int32_t m_mode = 0;            // which stripes the operator chose; for display
    std::int32_t leftStripeWidth = 0;   // lines of the left stripe zone; 0 or less: no left stripe
    std::int32_t rightStripeWidth = 0;  // lines of the right stripe zone; 0 or less: no right stripe
    std::int32_t unitPitch = 0;         // lines between the stripes of neighbouring unit positions
    std::int32_t m_distance = 0;        // lines between a stripe and the image; for display
    std::int32_t unitPosition = 0;      // the current unit's position in the colour group
    std::int32_t unitPositionCount = 0; // number of unit positions
    std::int16_t m_flags = 0;
};
static_assert(offsetof(SInkStripeParam_Pixel, leftStripeWidth) == 1 * 4);
static_assert(offsetof(SInkStripeParam_Pixel, rightStripeWidth) == 2 * 4);
static_assert(offsetof(SInkStripeParam_Pixel, unitPitch) == 3 * 4);
static_assert(offsetof(SInkStripeParam_Pixel, unitPosition) == 5 * 4);
static_assert(offsetof(SInkStripeParam_Pixel, unitPositionCount) == 6 * 4);
static_assert(offsetof(SInkStripeParam_Pixel, m_flags) == 7 * 4);

// The words that describe how the passes' masks divide the job.
struct SMaskData
{
    static constexpr std::size_t wordCount = 18;

    std::array<std::int32_t, 16> m_mask = {}; // words 1 to 16
    std::int32_t m_maskCount_1 = 0;           // word 17: masks in the scan direction
    std::int32_t m_maskCount_2 = 0;           // word 18: masks in the feed direction
};
static_assert(offsetof(SMaskData, m_maskCount_1) == 16 * 4);
static_assert(offsetof(SMaskData, m_maskCount_2) == 17 * 4);
static_assert(sizeof(SMaskData) == SMaskData::wordCount * 4);

// The horizontal place of one print unit, in scan positions.
struct SUnitHorizonInfo
{
    std::int32_t m_unitId = 0;
    std::int32_t m_horizon_1 = 0; // offset in the right-to-left pass
    std::int32_t m_horizon_2 = 0; // offset in the left-to-right pass
};
static_assert(offsetof(SUnitHorizonInfo, m_horizon_1) == 1 * 4);
static_assert(offsetof(SUnitHorizonInfo, m_horizon_2) == 2 * 4);

// The horizontal places of all units.
class CUnitInfo_Horizon
{
public:
    // All-zero offsets for a unit that has none set.
    SUnitHorizonInfo HorizonInfo_Get(int unitId) const
    {
        const auto found = m_units.find(unitId);
        return found == m_units.end() ? SUnitHorizonInfo{unitId, 0, 0} : found->second;
    }

    // The largest offset of any unit in each pass, in scan positions.
    int XMaxOffset_Right2Left_Get() const { return m_xMaxOffset_Right2Left; }
    int XMaxOffset_Left2Right_Get() const { return m_xMaxOffset_Left2Right; }

    std::map<int, SUnitHorizonInfo> m_units; // by unit id
    int m_xMaxOffset_Right2Left = 0;
    int m_xMaxOffset_Left2Right = 0;
};

// Everything that a host sets before a job. Copyable; the colour bands are shared.
struct SPrintParam
{
    SRipJobInfo m_jobInfo;          // the job as ripped
    SRipJobInfo m_jobInfo_CurPrint; // the job as it is being printed
    int m_curPrint_JobWidth = 0;    // scan positions of the job being printed
    EDotSizeMode m_dotSizeMode = EDotSizeMode::None;
    int m_alignByteCountPerLine = 1; // line alignment of unit bands, in bytes
    SMaskData m_maskData;
    SInkStripeParam_Pixel m_inkStripeParam;
    std::map<int, std::shared_ptr<const CBandData>> m_inkStripeColorData; // by unit id
    CUnitInfo_Horizon m_unitInfo_Horizon;
};
