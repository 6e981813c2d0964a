// Makes colour bands row by row; a row is one scan position, packed at the job's own depth.
#include "Host/Job/StripeColor.h"

#include "Host/HostError.h"
#include "Host/Input/SeparationReader.h"
#include "Host/Job/JobGeometry.h"
#include "Host/Job/JobNames.h"
#include "Host/PathText.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace
{

using ColorBand = std::shared_ptr<const CBandData>;

constexpr int bitsPerByte = 8;

[[noreturn]] void Color_Refuse(const SJob& job, const SJobUnit& unit, const std::string& what, const std::string& fix)
{
    throw CInputError(
        {SMistake{false, job.m_file, unit.m_stripeColor.m_place, "stripe-color",
                  Job_UnitText(unit) + ": StripeColor " + Text_Printable(unit.m_stripeColor.m_text) + what, fix}});
}

void Size_Check(const SJob& job, const SJobUnit& unit, const SSeparationInfo& info)
{
    if (info.bitsPerPixel != job.m_bitsPerPixel)
    {
        Color_Refuse(job, unit,
                     " has " + std::to_string(info.bitsPerPixel) + (info.bitsPerPixel == 1 ? " bit" : " bits") +
                         " per pixel",
                     "BitsPerPixel is " + std::to_string(job.m_bitsPerPixel));
    }
    if (info.width != job.m_nozzles)
    {
        Color_Refuse(job, unit, " has " + std::to_string(info.width) + " columns",
                     "it needs one for each nozzle, and Nozzles is " + std::to_string(job.m_nozzles));
    }
    if (info.height > job.m_inkStripe.m_stripeLength)
    {
        Color_Refuse(job, unit, " has " + std::to_string(info.height) + " rows",
                     "a stripe has StripeLength scan positions at most, which is " +
                         std::to_string(job.m_inkStripe.m_stripeLength));
    }
}

// Opens the unit's file; what is wrong with it names the unit and its line.
std::unique_ptr<CSeparationReader> Color_Open(const SJob& job, const SJobUnit& unit)
{
    try
    {
        return std::make_unique<CSeparationReader>(Path_Text(unit.m_stripeColor.m_path));
    }
    catch (const CInputError& error)
    {
        Color_Refuse(job, unit, ": " + error.WithoutFile(), "");
    }
}

unsigned Pixel_Get(const std::vector<unsigned char>& row, int index, int bits)
{
    const int position = index * bits;
    const unsigned byte = row[static_cast<std::size_t>(position / bitsPerByte)];
    return byte >> static_cast<unsigned>(bitsPerByte - bits - position % bitsPerByte) & ((1U << bits) - 1U);
}

void Pixel_Put(unsigned char* line, int index, int bits, unsigned pixel)
{
    const int position = index * bits;
    line[position / bitsPerByte] |=
        static_cast<unsigned char>(pixel << static_cast<unsigned>(bitsPerByte - bits - position % bitsPerByte));
}

std::vector<unsigned char> Row_Make(const SJob& job, unsigned pixel)
{
    const std::size_t bits = static_cast<std::size_t>(job.m_nozzles) * static_cast<std::size_t>(job.m_bitsPerPixel);
    std::vector<unsigned char> row((bits + bitsPerByte - 1) / bitsPerByte);
    for (int nozzle = 0; nozzle < job.m_nozzles; ++nozzle)
    {
        Pixel_Put(row.data(), nozzle, job.m_bitsPerPixel, pixel);
    }
    return row;
}

unsigned char* Line_Of(const CBandData& band, int line)
{
    return band.m_pData + static_cast<std::ptrdiff_t>(line) * band.m_bytesPerLine;
}

// The lines of one scan position, from its row.
void Position_Fill(const SJob& job, CBandData& band, int position, const std::vector<unsigned char>& row)
{
    const int lines = Job_LinesPerScanPosition(job);
    if (lines == 1)
    {
        std::copy(row.begin(), row.end(), Line_Of(band, position));
        return;
    }
    for (int nozzle = 0; nozzle < job.m_nozzles; ++nozzle)
    {
        const unsigned pixel = Pixel_Get(row, nozzle, job.m_bitsPerPixel);
        for (int plane = 0; plane < lines; ++plane)
        {
            const unsigned bit = pixel >> static_cast<unsigned>(lines - 1 - plane) & 1U;
            Pixel_Put(Line_Of(band, position * lines + plane), nozzle, 1, bit);
        }
    }
}

std::shared_ptr<CBandData> Band_Make(const SJob& job, int length)
{
    auto band = std::make_shared<CBandData>();
    if (!band->Create(Job_UnitWidth(job), length * Job_LinesPerScanPosition(job), Job_UnitBitsPerPixel(job),
                      job.m_alignByteCountPerLine))
    {
        throw CRunError("no memory for ink stripes of " + std::to_string(length) + " scan positions and " +
                        std::to_string(job.m_nozzles) + " nozzles");
    }
    return band;
}

ColorBand Color_Solid(const SJob& job, EStripeFill fill)
{
    const int length = job.m_inkStripe.m_stripeLength;
    const std::shared_ptr<CBandData> band = Band_Make(job, length);
    const auto row = Row_Make(job, static_cast<unsigned>(StripeFill_Code(fill, job.m_bitsPerPixel)));
    for (int position = 0; position < length; ++position)
    {
        Position_Fill(job, *band, position, row);
    }
    return band;
}

ColorBand Color_OfFile(const SJob& job, const SJobUnit& unit)
{
    const std::unique_ptr<CSeparationReader> reader = Color_Open(job, unit);
    Size_Check(job, unit, reader->Info_Get());
    const std::shared_ptr<CBandData> band = Band_Make(job, reader->Height());
    std::vector<unsigned char> row(static_cast<std::size_t>(reader->RowBytes()));
    for (int position = 0; reader->Row_Read(row.data()); ++position)
    {
        Position_Fill(job, *band, position, row);
    }
    return band;
}

} // namespace

int StripeFill_Code(EStripeFill fill, int bitsPerPixel)
{
    switch (fill)
    {
    case EStripeFill::None:
        return 0;
    case EStripeFill::Small:
        return 1;
    case EStripeFill::Middle:
        return 2;
    case EStripeFill::Big:
    case EStripeFill::Full:
        break;
    }
    return bitsPerPixel == 1 ? 1 : 3;
}

int StripeColor_Length(const SJob& job, const SJobUnit& unit)
{
    if (unit.m_stripeColor.m_fill)
    {
        return job.m_inkStripe.m_stripeLength;
    }
    const SSeparationInfo info = Color_Open(job, unit)->Info_Get();
    Size_Check(job, unit, info);
    return info.height;
}

std::map<int, std::shared_ptr<const CBandData>> Job_StripeColors(const SJob& job)
{
    std::map<int, ColorBand> colors;
    std::map<std::string, ColorBand> known;
    for (const SJobUnit& unit : job.m_units)
    {
        if (!Job_HasStripes(job, unit))
        {
            continue;
        }
        ColorBand& band = known[unit.m_stripeColor.m_text];
        if (band == nullptr)
        {
            const std::optional<EStripeFill> fill = unit.m_stripeColor.m_fill;
            band = fill ? Color_Solid(job, *fill) : Color_OfFile(job, unit);
        }
        colors[unit.m_unitId] = band;
    }
    return colors;
}
