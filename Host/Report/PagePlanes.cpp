// Rows of the output and rows of the separations, side by side.
#include "Host/Report/PagePlanes.h"

#include "Host/Model/PageInk.h"
#include "Host/Report/DeflatedText.h"

#include <algorithm>
#include <map>
#include <memory>

namespace
{

constexpr std::size_t mostDifferences = 20; // that are named

// Where a unit prints a position of its stripe.
struct SStripeColumn
{
    std::int64_t m_at = 0; // column of the picture
    int m_stripePosition = 0;
};

// One unit on its way.
class CUnitRows
{
public:
    CUnitRows(const CPageModel& model, const SBoardUnitInfo& unit, const CJobPage& job, int page,
              const SPagePlanes& planes)
        : m_model(model),
          m_unit(unit),
          m_planes(planes),
          m_code(DropSize_Of(model.Info())),
          m_values(static_cast<std::size_t>(planes.m_area.m_columnCount)),
          m_outputRow(static_cast<std::size_t>(planes.m_rowBytes)),
          m_jobRow(static_cast<std::size_t>(planes.m_rowBytes))
    {
        for (const SPageUnit& candidate : job.Units())
        {
            if (candidate.m_pUnit->m_unitId == unit.m_unitId)
            {
                m_reader = job.Reader_Open(candidate, page);
                m_separationRow.resize(m_reader == nullptr ? 0 : static_cast<std::size_t>(m_reader->RowBytes()));
            }
        }
        for (int nozzle = 0; nozzle < model.Info().m_nozzles; ++nozzle)
        {
            m_hasPlace.push_back(!model.Bits_Of(unit, nozzle, 0).empty());
        }
    }

    // `bBand`: the output has one for it.
    void Swath_Begin(int swath, bool bBand)
    {
        m_bNothing = m_reader == nullptr && !bBand && m_model.Info().m_bSkipBlank;
        m_stripes.clear();
        if (m_reader != nullptr)
        {
            return;
        }
        const SBoardPass pass = m_model.Pass_Get(swath);
        const int offset = CPageModel::Offset_Of(m_unit, pass.m_bLeftToRight);
        for (int position = 0; position < pass.m_positions; ++position)
        {
            const SModelPoint point = m_model.Point_Get(m_unit, 0, position, swath);
            const std::int64_t at = pass.m_firstLineColumn + std::int64_t{position - offset} * pass.m_columnStep -
                                    m_planes.m_area.m_firstColumn;
            if (point.m_stripePosition >= 0 && at >= 0 && at < m_planes.m_area.m_columnCount)
            {
                m_stripes.push_back({at, point.m_stripePosition});
            }
        }
    }

    // What the job has in a row of the swath, dot by dot.
    const std::vector<unsigned char>& Job_Take(std::int64_t row, int nozzle, const CPageInk& ink)
    {
        std::ranges::fill(m_values, static_cast<unsigned char>(0));
        if (m_reader != nullptr && row < m_reader->Height() && m_reader->Row_Read(m_separationRow.data()))
        {
            const int bits = m_reader->BitsPerPixel();
            const int perByte = 8 / bits;
            unsigned char* pValue = m_values.data() - m_planes.m_area.m_firstColumn;
            for (int column = 0; column < m_reader->Width(); ++column)
            {
                const unsigned char byte = m_separationRow[static_cast<std::size_t>(column / perByte)];
                pValue[column] =
                    static_cast<unsigned char>(byte >> (8 - bits - column % perByte * bits) & ((1 << bits) - 1));
            }
        }
        for (const SStripeColumn& stripe : m_stripes)
        {
            m_values[static_cast<std::size_t>(stripe.m_at)] =
                static_cast<unsigned char>(ink.Stripe_Get(m_unit, nozzle, stripe.m_stripePosition));
        }
        return m_values;
    }

    // A dot of the row that Job_Take took. True if it is not as the job has it.
    bool Dot_Put(std::size_t at, int value, int nozzle)
    {
        const int job = m_values[at];
        const int bits = m_planes.m_pixelBits;
        const std::size_t byte = at * static_cast<std::size_t>(bits) / 8;
        const int shift = 8 - bits - static_cast<int>(at * static_cast<std::size_t>(bits) % 8);
        m_outputRow[byte] |= static_cast<unsigned char>(value << shift);
        m_jobRow[byte] |= static_cast<unsigned char>(job << shift);
        m_bOwnJob = m_bOwnJob || Job_FromOutput(value, m_model.Info()) != job;
        const bool bPrinted = m_hasPlace[static_cast<std::size_t>(nozzle)] && !m_bNothing;
        const int printed = !bPrinted ? 0 : m_code > 0 && job != 0 ? m_code : job;
        return printed != value;
    }

    void Row_Finish()
    {
        m_output.Add(m_outputRow);
        m_job.Add(m_jobRow);
        std::ranges::fill(m_outputRow, static_cast<unsigned char>(0));
        std::ranges::fill(m_jobRow, static_cast<unsigned char>(0));
    }

    SUnitPlanes Finish() { return {m_output.Finish(), m_bOwnJob ? m_job.Finish() : ""}; }

    int UnitId() const { return m_unit.m_unitId; }

private:
    const CPageModel& m_model;
    const SBoardUnitInfo& m_unit;
    const SPagePlanes& m_planes;
    int m_code; // of the one drop size that the layout prints; 0: it prints the pixel's
    std::unique_ptr<CSeparationReader> m_reader;
    std::vector<unsigned char> m_separationRow;
    std::vector<SStripeColumn> m_stripes; // of the swath
    std::vector<bool> m_hasPlace;         // by nozzle
    std::vector<unsigned char> m_values;  // of the job's row
    std::vector<unsigned char> m_outputRow;
    std::vector<unsigned char> m_jobRow;
    bool m_bNothing = false; // stripes of a blank swath that is left out
    bool m_bOwnJob = false;  // the job's plane says more than the output's
    CDeflatedText m_output;
    CDeflatedText m_job;
};

} // namespace

int DropSize_Of(const SBoardInfo& info)
{
    constexpr std::array<std::string_view, 4> sizes = {"", "Small", "Middle", "Big"};
    return static_cast<int>(std::ranges::find(sizes, info.m_dotSizeMode) - sizes.begin()) % 4;
}

int Job_FromOutput(int value, const SBoardInfo& info)
{
    return DropSize_Of(info) > 0 ? std::min(value, 1) : value;
}

SPagePlanes Planes_Make(CPreviewPage& output, const CJobPage& job, int page, const OnSwath& onSwath)
{
    const CPageModel& model = output.Bands().Model();
    const SBoardInfo& info = model.Info();
    SPagePlanes planes;
    planes.m_pixelBits = std::max(output.Dots().PixelBits(), info.m_bitsPerPixel);
    planes.m_area = PreviewArea_Whole(info, true);
    planes.m_rowBytes = (planes.m_area.m_columnCount * planes.m_pixelBits + 7) / 8;
    CPageInk ink(job); // its stripes
    std::vector<std::unique_ptr<CUnitRows>> units;
    for (const SBoardUnitInfo& unit : info.m_units)
    {
        units.push_back(std::make_unique<CUnitRows>(model, unit, job, page, planes));
    }
    const CSwathDots& dots = output.Dots();
    const auto columns = static_cast<std::size_t>(planes.m_area.m_columnCount);
    const auto skipped = static_cast<std::size_t>(planes.m_area.m_firstColumn - dots.FirstColumn());
    const std::vector<unsigned char> blank(dots.BytesPerDot());
    for (int swath = 0; swath < model.SwathCount(); ++swath)
    {
        onSwath(swath);
        output.Swath_Take(swath);
        planes.m_bands.push_back(dots.IsBlank() ? -1 : output.Bands().BandNo());
        for (const auto& unit : units)
        {
            unit->Swath_Begin(swath, !dots.IsBlank());
        }
        const std::int64_t firstRow = std::int64_t{swath} * info.m_nozzles;
        const auto rows = static_cast<int>(std::min<std::int64_t>(info.m_nozzles, planes.m_area.m_rowCount - firstRow));
        for (int nozzle = 0; nozzle < rows; ++nozzle)
        {
            const unsigned char* pDots = dots.IsBlank() ? nullptr : dots.Row_Get(nozzle) + skipped * dots.BytesPerDot();
            for (std::size_t i = 0; i < units.size(); ++i)
            {
                const std::vector<unsigned char>& jobRow = units[i]->Job_Take(firstRow + nozzle, nozzle, ink);
                for (std::size_t at = 0; at < columns; ++at)
                {
                    const unsigned char* pDot = pDots == nullptr ? blank.data() : pDots + at * dots.BytesPerDot();
                    const int value = CSwathDots::Value_Get(pDot, static_cast<int>(i));
                    if ((value != 0 || jobRow[at] != 0) && units[i]->Dot_Put(at, value, nozzle))
                    {
                        ++planes.m_differenceCount;
                        if (planes.m_different.size() < mostDifferences)
                        {
                            planes.m_different.push_back({units[i]->UnitId(), firstRow + nozzle,
                                                          static_cast<std::int64_t>(at) + planes.m_area.m_firstColumn});
                        }
                    }
                }
                units[i]->Row_Finish();
            }
        }
    }
    output.Finish();
    for (const auto& unit : units)
    {
        planes.m_units.push_back(unit->Finish());
    }
    return planes;
}
