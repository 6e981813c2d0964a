// Walking the scan positions of a pass.
#include "Host/Model/StripeModel.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace
{

// A place on the carriage's path, in lines of a band; it moves by whole scan positions.
class CWalker
{
public:
    CWalker(int line, int linesPerPosition) : m_line(line), m_linesPerPosition(linesPerPosition) {}

    void Forward(int positions) { Walk(positions, 1); }
    void Back(int positions) { Walk(positions, -1); }
    int Line() const { return m_line; }

private:
    void Walk(int positions, int direction)
    {
        for (int i = 0; i < (positions < 0 ? -positions : positions); ++i)
        {
            for (int line = 0; line < m_linesPerPosition; ++line)
            {
                m_line += positions < 0 ? -direction : direction;
            }
        }
    }

    int m_line;
    int m_linesPerPosition;
};

int LinesPerPosition(const SModelJob& job)
{
    return job.bByUnit ? job.bitsPerPixel : 1;
}

bool IsLeftToRight(int bandAttr)
{
    return bandAttr == 1;
}

} // namespace

const SModelUnit& SModelJob::Unit_Get(int id) const
{
    const auto found = std::find_if(units.begin(), units.end(), [id](const SModelUnit& unit) { return unit.id == id; });
    if (found == units.end())
    {
        throw std::out_of_range("no such unit");
    }
    return *found;
}

int CStripeModel::Offset(int bandAttr) const
{
    return IsLeftToRight(bandAttr) ? m_job.xMaxOffset_Left2Right : m_job.xMaxOffset_Right2Left;
}

// The pass crosses the offset, one mask's share of the job, and both zones.
int CStripeModel::LineCount(int bandAttr) const
{
    CWalker end(0, LinesPerPosition(m_job));
    end.Forward(Offset(bandAttr));
    for (int dealt = m_job.maskCount; dealt <= m_job.jobWidth; dealt += m_job.maskCount)
    {
        end.Forward(1);
    }
    end.Forward(m_job.leftStripeWidth);
    end.Forward(m_job.rightStripeWidth);
    return end.Line();
}

int CStripeModel::BytesPerLine() const
{
    const int bits = m_job.bandWidth * (m_job.bByUnit ? 1 : m_job.bitsPerPixel);
    int bytes = 0;
    while (bytes * 8 < bits || bytes % m_job.alignBytes != 0)
    {
        ++bytes;
    }
    return bytes;
}

// Left to right the left zone comes first: one pitch for every position before the unit's. Right to left it comes last:
// from the band's end back over the offset, and one pitch for every position up to the unit's own.
int CStripeModel::Left_FirstLine(const SModelUnit& unit, int bandAttr) const
{
    if (IsLeftToRight(bandAttr))
    {
        CWalker walker(0, LinesPerPosition(m_job));
        for (int before = 0; before < unit.position; ++before)
        {
            walker.Forward(m_job.unitPitch);
        }
        walker.Forward(unit.horizon_2);
        return walker.Line();
    }
    CWalker walker(LineCount(bandAttr), LinesPerPosition(m_job));
    walker.Back(m_job.xMaxOffset_Right2Left);
    for (int position = 0; position <= unit.position; ++position)
    {
        walker.Back(m_job.unitPitch);
    }
    walker.Forward(unit.horizon_1);
    return walker.Line();
}

// The same from the other side, with the positions counted from the last.
int CStripeModel::Right_FirstLine(const SModelUnit& unit, int bandAttr) const
{
    if (IsLeftToRight(bandAttr))
    {
        CWalker walker(LineCount(bandAttr), LinesPerPosition(m_job));
        walker.Back(m_job.xMaxOffset_Left2Right);
        for (int position = m_job.unitPositionCount - 1; position >= unit.position; --position)
        {
            walker.Back(m_job.unitPitch);
        }
        walker.Forward(unit.horizon_2);
        return walker.Line();
    }
    CWalker walker(0, LinesPerPosition(m_job));
    for (int position = m_job.unitPositionCount - 1; position > unit.position; --position)
    {
        walker.Forward(m_job.unitPitch);
    }
    walker.Forward(unit.horizon_1);
    return walker.Line();
}

int CStripeModel::FreeRoom(const SModelUnit& unit) const
{
    int lines = LineCount(1);
    for (const int bandAttr : {1, 0})
    {
        const int height = LineCount(bandAttr);
        lines = std::min({lines, height - Left_FirstLine(unit, bandAttr), height - Right_FirstLine(unit, bandAttr)});
    }
    return lines * BytesPerLine();
}

SModelBand CStripeModel::Band_Make(int unitId, int bandAttr) const
{
    const SModelUnit& unit = m_job.Unit_Get(unitId);
    SModelBand band;
    band.unitIndex = unitId;
    band.unitDirection = unit.direction;
    band.bandAttr = bandAttr;
    band.width = m_job.bandWidth;
    band.bitsPerPixel = m_job.bByUnit ? 1 : m_job.bitsPerPixel;
    band.height = LineCount(bandAttr);
    band.bytesPerLine = BytesPerLine();
    band.data.resize(static_cast<std::size_t>(band.height) * static_cast<std::size_t>(band.bytesPerLine));
    if (m_job.leftStripeWidth > 0)
    {
        Stripe_Put(band, Left_FirstLine(unit, bandAttr), unit);
    }
    if (m_job.rightStripeWidth > 0)
    {
        Stripe_Put(band, Right_FirstLine(unit, bandAttr), unit);
    }
    return band;
}

void CStripeModel::Stripe_Put(SModelBand& band, int firstLine, const SModelUnit& unit) const
{
    int line = firstLine;
    int column = 0;
    for (const unsigned char value : unit.color)
    {
        if (line < 0 || line >= band.height)
        {
            throw std::out_of_range("the stripe leaves its band");
        }
        const auto lineBegin = static_cast<std::size_t>(line) * static_cast<std::size_t>(band.bytesPerLine);
        band.data[lineBegin + static_cast<std::size_t>(column)] = value;
        if (++column == band.bytesPerLine)
        {
            column = 0;
            ++line;
        }
    }
}

std::vector<int> CStripeModel::RestUnits(const std::vector<int>& inputUnits) const
{
    std::vector<int> cart;
    for (const SModelUnit& unit : m_job.units)
    {
        if (std::find(cart.begin(), cart.end(), unit.id) == cart.end())
        {
            cart.push_back(unit.id);
        }
    }
    if (cart.size() == inputUnits.size())
    {
        return {};
    }
    std::sort(cart.begin(), cart.end());
    std::vector<int> rest;
    for (const int id : cart)
    {
        if (std::find(inputUnits.begin(), inputUnits.end(), id) == inputUnits.end())
        {
            rest.push_back(id);
        }
    }
    return rest;
}
