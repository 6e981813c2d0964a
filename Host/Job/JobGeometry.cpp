// Sizes of unit bands and board bands, and places in them.
#include "Host/Job/JobGeometry.h"

#include <algorithm>

namespace
{

constexpr std::int64_t bitsPerByte = 8;

std::int64_t RoundUp(std::int64_t value, std::int64_t multiple)
{
    return (value + multiple - 1) / multiple * multiple;
}

std::int64_t Bytes_Of(std::int64_t bits)
{
    return RoundUp(bits, bitsPerByte) / bitsPerByte;
}

int PixelsPerNozzle(const SJob& job)
{
    return MapClass_Get(job.m_map.m_class).m_pixelsPerNozzle;
}

std::int64_t PassPositions(const SJob& job, int pageWidth, bool bLeftToRight)
{
    return std::int64_t{Job_MaxOffset(job, bLeftToRight)} + pageWidth + job.m_inkStripe.m_leftStripeWidth +
           job.m_inkStripe.m_rightStripeWidth;
}

int Offset_Of(const SJobUnit& unit, bool bLeftToRight)
{
    return bLeftToRight ? unit.m_horizon_2 : unit.m_horizon_1;
}

} // namespace

int Job_LinesPerScanPosition(const SJob& job)
{
    return job.m_dpOption.m_dataPushStyle == EDataPushStyle::ByUnit ? job.m_bitsPerPixel : 1;
}

int Job_UnitWidth(const SJob& job)
{
    return job.m_nozzles * PixelsPerNozzle(job);
}

int Job_UnitBitsPerPixel(const SJob& job)
{
    return job.m_bitsPerPixel / Job_LinesPerScanPosition(job) / PixelsPerNozzle(job);
}

std::int64_t Job_BoardWidth(const SJob& job)
{
    const std::int64_t unitWidth = std::int64_t{job.m_nozzles} * PixelsPerNozzle(job);
    return MapClass_FrameCount(job.m_map, unitWidth) *
           MapClass_FrameBits(job.m_map.m_class, job.m_dpOption.m_printerDataWidth);
}

SJobGeometry Job_Geometry(const SJob& job, int pageWidth, int pageHeight)
{
    SJobGeometry geometry;
    geometry.m_swathCount = RoundUp(pageHeight, job.m_nozzles) / job.m_nozzles;
    geometry.m_linesPerScanPosition = Job_LinesPerScanPosition(job);
    geometry.m_unitWidth = Job_UnitWidth(job);
    geometry.m_unitBitsPerPixel = Job_UnitBitsPerPixel(job);
    const std::int64_t unitLineBits = std::int64_t{geometry.m_unitWidth} * geometry.m_unitBitsPerPixel;
    geometry.m_unitBytesPerLine = RoundUp(Bytes_Of(unitLineBits), job.m_alignByteCountPerLine);
    geometry.m_boardWidth = Job_BoardWidth(job);
    geometry.m_boardBytesPerLine = Bytes_Of(geometry.m_boardWidth);
    geometry.m_lineCount_Left2Right = PassPositions(job, pageWidth, true) * geometry.m_linesPerScanPosition;
    geometry.m_lineCount_Right2Left = PassPositions(job, pageWidth, false) * geometry.m_linesPerScanPosition;
    geometry.m_lineCount = job.m_bBidirectional
                               ? std::max(geometry.m_lineCount_Left2Right, geometry.m_lineCount_Right2Left)
                               : geometry.m_lineCount_Left2Right;
    return geometry;
}

int Job_PassPositions(const SJob& job, int pageWidth, bool bLeftToRight)
{
    return static_cast<int>(PassPositions(job, pageWidth, bLeftToRight));
}

int Job_ImagePosition(const SJob& job, const SJobUnit& unit, bool bLeftToRight)
{
    const SJobInkStripe& stripe = job.m_inkStripe;
    return (bLeftToRight ? stripe.m_leftStripeWidth : stripe.m_rightStripeWidth) + Offset_Of(unit, bLeftToRight);
}

int Job_MaxOffset(const SJob& job, bool bLeftToRight)
{
    int offset = 0;
    for (const SJobUnit& unit : job.m_units)
    {
        offset = std::max(offset, Offset_Of(unit, bLeftToRight));
    }
    return offset;
}

bool Job_HasStripes(const SJob& job, const SJobUnit& unit)
{
    const SJobInkStripe& stripe = job.m_inkStripe;
    return job.m_stageKind != EStageKind::Base && stripe.m_leftStripeWidth + stripe.m_rightStripeWidth >= 1 &&
           !unit.HasSeparation();
}

bool Job_HasStripes(const SJob& job)
{
    return std::any_of(job.m_units.begin(), job.m_units.end(),
                       [&](const SJobUnit& unit) { return Job_HasStripes(job, unit); });
}

std::optional<SJobStripe> Job_Stripe(const SJob& job, const SJobUnit& unit, int pageWidth, bool bLeftToRight,
                                     bool bLeftStripe, int length)
{
    const SJobInkStripe& stripe = job.m_inkStripe;
    if ((bLeftStripe ? stripe.m_leftStripeWidth : stripe.m_rightStripeWidth) < 1)
    {
        return std::nullopt;
    }
    // Counted from the band's first position in the zone that the carriage meets first, else from its end.
    const std::int64_t pitch = stripe.m_unitPitch;
    const std::int64_t before = unit.m_unitPosition;
    const std::int64_t behind = std::int64_t{stripe.m_unitPositionCount} - unit.m_unitPosition - 1;
    const std::int64_t offset = Offset_Of(unit, bLeftToRight);
    if (bLeftStripe == bLeftToRight)
    {
        const std::int64_t begin = (bLeftToRight ? before : behind) * pitch + offset;
        return SJobStripe{begin, begin + length};
    }
    const std::int64_t fromEnd =
        ((bLeftToRight ? behind : before) + 1) * pitch - offset + Job_MaxOffset(job, bLeftToRight);
    const std::int64_t begin = PassPositions(job, pageWidth, bLeftToRight) - fromEnd;
    return SJobStripe{begin, begin + length};
}
