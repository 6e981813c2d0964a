// Sizes of unit bands and board bands.
#include "Host/Job/JobGeometry.h"

namespace
{

std::int64_t RoundUp(std::int64_t value, std::int64_t multiple)
{
    return (value + multiple - 1) / multiple * multiple;
}

} // namespace

int Job_LinesPerScanPosition(const SJob& job)
{
    return job.m_dpOption.m_dataPushStyle == EDataPushStyle::ByUnit ? job.m_bitsPerPixel : 1;
}

int Job_UnitBitsPerPixel(const SJob& job)
{
    return job.m_bitsPerPixel / Job_LinesPerScanPosition(job);
}

SJobGeometry Job_Geometry(const SJob& job, int pageWidth, int pageHeight)
{
    constexpr std::int64_t bitsPerByte = 8;
    SJobGeometry geometry;
    geometry.m_swathCount = RoundUp(pageHeight, job.m_nozzles) / job.m_nozzles;
    geometry.m_linesPerScanPosition = Job_LinesPerScanPosition(job);
    geometry.m_unitWidth = job.m_nozzles;
    geometry.m_unitBitsPerPixel = Job_UnitBitsPerPixel(job);
    const std::int64_t unitLineBits = std::int64_t{job.m_nozzles} * geometry.m_unitBitsPerPixel;
    geometry.m_unitBytesPerLine =
        RoundUp(RoundUp(unitLineBits, bitsPerByte) / bitsPerByte, job.m_alignByteCountPerLine);
    geometry.m_boardWidth = std::int64_t{job.m_nozzles} * job.m_dpOption.m_printerDataWidth;
    geometry.m_boardBytesPerLine = RoundUp(geometry.m_boardWidth, bitsPerByte) / bitsPerByte;
    geometry.m_lineCount = std::int64_t{pageWidth} * geometry.m_linesPerScanPosition;
    return geometry;
}
