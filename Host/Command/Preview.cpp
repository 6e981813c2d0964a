// Painting rows of dots, and the ways to make fewer pixels of them.
#include "Host/Command/Preview.h"

#include "Host/HostError.h"
#include "Host/Picture/PngWriter.h"
#include "Host/Picture/RowReduction.h"
#include "Host/ShownText.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>

namespace
{

constexpr std::uint32_t white = 0xffffff;
constexpr std::uint32_t around = 0xf0f0f0; // where the page is not
constexpr int channelCount = 3;
constexpr const char* tooLarge = "a larger --reduce, or --rows and --columns, make it smaller";

unsigned Channel_Of(std::uint32_t color, int channel)
{
    return color >> (16U - 8U * static_cast<unsigned>(channel)) & 0xFFU;
}

void Color_Put(std::uint32_t color, unsigned char* pPixel)
{
    for (int channel = 0; channel < channelCount; ++channel)
    {
        pPixel[channel] = static_cast<unsigned char>(Channel_Of(color, channel));
    }
}

// Paper, or what lies around it, for a row of the picture.
class CGround
{
public:
    CGround(const SBoardInfo& info, const SPreviewArea& area) : m_info(info), m_area(area) {}

    std::uint32_t Color_Get(std::int64_t row, std::int64_t column) const
    {
        return row < m_info.m_pageHeight && column >= 0 && column < m_info.m_pageWidth ? white : around;
    }

    void Row_Put(std::int64_t row, unsigned char* pPixels) const
    {
        for (std::int64_t i = 0; i < m_area.m_columnCount; ++i, pPixels += channelCount)
        {
            Color_Put(Color_Get(row, m_area.m_firstColumn + i), pPixels);
        }
    }

private:
    const SBoardInfo& m_info;
    const SPreviewArea& m_area;
};

// What is left of the light of each channel behind the inks of a dot: a factor for each value of each of its bytes.
class CInks
{
public:
    using CLight = std::array<float, channelCount>;

    CInks(const std::vector<std::uint32_t>& colors, int pixelBits, std::size_t bytesPerDot) : m_tables(bytesPerDot)
    {
        const float most = pixelBits == 2 ? 3 : 1;
        for (std::size_t byte = 0; byte < bytesPerDot; ++byte)
        {
            for (int value = 0; value < 256; ++value)
            {
                CLight light = {1, 1, 1};
                for (int i = 0; i < CSwathDots::unitsPerByte; ++i)
                {
                    const std::size_t unit = byte * CSwathDots::unitsPerByte + static_cast<std::size_t>(i);
                    const auto drop = static_cast<float>(value >> (6 - 2 * i) & 3);
                    for (int channel = 0; channel < channelCount && unit < colors.size(); ++channel)
                    {
                        const float shown = static_cast<float>(Channel_Of(colors[unit], channel)) / 255;
                        light[static_cast<std::size_t>(channel)] *= 1 - std::min(drop / most, 1.0F) * (1 - shown);
                    }
                }
                m_tables[byte][static_cast<std::size_t>(value)] = light;
            }
        }
    }

    void Dot_Put(const unsigned char* pDot, std::uint32_t ground, unsigned char* pPixel) const
    {
        CLight light = m_tables[0][pDot[0]];
        for (std::size_t byte = 1; byte < m_tables.size(); ++byte)
        {
            const CLight& more = m_tables[byte][pDot[byte]];
            std::ranges::transform(light, more, light.begin(), std::multiplies<>());
        }
        for (int channel = 0; channel < channelCount; ++channel)
        {
            pPixel[channel] = static_cast<unsigned char>(std::lround(light[static_cast<std::size_t>(channel)] *
                                                                     static_cast<float>(Channel_Of(ground, channel))));
        }
    }

private:
    std::vector<std::array<CLight, 256>> m_tables; // by byte of a dot, and its value
};

bool IsBlankDot(const unsigned char* pDot, std::size_t size)
{
    return std::all_of(pDot, pDot + size, [](unsigned char byte) { return byte == 0; });
}

SPngFormat Format_Make(const SBoardInfo& info, const SPreviewArea& area, EPngPixels pixels)
{
    return {.m_width = area.Width(),
            .m_height = area.Height(),
            .m_pixels = pixels,
            .m_xResolution = info.m_xResolution / area.m_reduce,
            .m_yResolution = info.m_yResolution / area.m_reduce};
}

// Calls `take` for each swath of the page, and `paint` with its number and each of its rows that the area has.
template<class TTake, class TPaint>
void Rows_Walk(const CPageModel& model, const SPreviewArea& area, TTake take, TPaint paint)
{
    const int nozzles = model.Info().m_nozzles;
    for (int swath = 0; swath < model.SwathCount(); ++swath)
    {
        take(swath);
        const std::int64_t firstRow = std::int64_t{swath} * nozzles;
        const std::int64_t begin = std::max<std::int64_t>(area.m_firstRow - firstRow, 0);
        const std::int64_t end = std::min<std::int64_t>(area.m_firstRow + area.m_rowCount - firstRow, nozzles);
        for (std::int64_t row = begin; row < end; ++row)
        {
            paint(firstRow + row, static_cast<int>(row));
        }
    }
}

// The area's first dot of a row.
const unsigned char* Dots_Get(const CSwathDots& dots, const SPreviewArea& area, int row)
{
    return dots.Row_Get(row) + static_cast<std::size_t>(area.m_firstColumn - dots.FirstColumn()) * dots.BytesPerDot();
}

// What is in a picture of changes, from dots whose kinds come row by row. A square of dots has the colour of its
// changes; without one it is as grey as it has dots.
class CChangeReduction
{
public:
    enum EKind : unsigned char
    {
        Kind_Both = 1,
        Kind_OnlyA = 2,
        Kind_OnlyB = 4,
        Kind_Size = 8,
    };

    CChangeReduction(CPngWriter& writer, const CGround& ground, const SPreviewArea& area)
        : m_writer(writer), m_ground(ground), m_area(area), m_squares(static_cast<std::size_t>(area.Width()))
    {
    }

    void Row_Add(const unsigned char* pKinds)
    {
        for (std::int64_t i = 0; i < m_area.m_columnCount; ++i)
        {
            SSquare& square = m_squares[static_cast<std::size_t>(i / m_area.m_reduce)];
            square.m_kinds |= pKinds[i];
            square.m_dots += pKinds[i] & 1U;
        }
        ++m_taken;
        if (m_taken % m_area.m_reduce == 0 || m_taken == m_area.m_rowCount)
        {
            Row_Write();
        }
    }

private:
    struct SSquare
    {
        unsigned m_kinds = 0; // of EKind
        std::uint32_t m_dots = 0;
    };

    void Row_Write()
    {
        const std::int64_t firstRow = (m_taken - 1) / m_area.m_reduce * m_area.m_reduce;
        std::vector<unsigned char> row(m_squares.size() * channelCount);
        for (std::size_t i = 0; i < m_squares.size(); ++i)
        {
            const std::int64_t column = static_cast<std::int64_t>(i) * m_area.m_reduce;
            const std::int64_t dots =
                (m_taken - firstRow) * std::min<std::int64_t>(m_area.m_reduce, m_area.m_columnCount - column);
            Color_Put(Color_Of(m_squares[i], dots,
                               m_ground.Color_Get(m_area.m_firstRow + firstRow, m_area.m_firstColumn + column)),
                      row.data() + i * channelCount);
            m_squares[i] = {};
        }
        m_writer.Row_Write(row.data());
    }

    static std::uint32_t Color_Of(const SSquare& square, std::int64_t dots, std::uint32_t ground)
    {
        switch (square.m_kinds & ~static_cast<unsigned>(Kind_Both))
        {
        case 0:
            break;
        case Kind_OnlyA:
            return Color_OnlyA;
        case Kind_OnlyB:
            return Color_OnlyB;
        case Kind_Size:
            return Color_Size;
        default:
            return Color_Several;
        }
        std::uint32_t color = 0;
        for (int channel = 0; channel < channelCount; ++channel)
        {
            const auto paper = static_cast<std::int64_t>(Channel_Of(ground, channel));
            const auto both = static_cast<std::int64_t>(Channel_Of(Color_Both, channel));
            const std::int64_t mixed = (paper * (dots - square.m_dots) + both * square.m_dots + dots / 2) / dots;
            color = color << 8U | static_cast<std::uint32_t>(mixed);
        }
        return color;
    }

    CPngWriter& m_writer;
    const CGround& m_ground;
    const SPreviewArea& m_area;
    std::vector<SSquare> m_squares;
    std::int64_t m_taken = 0; // rows
};

// Two pages side by side.
class CChangeFinder
{
public:
    CChangeFinder(const CPreviewPage& a, const CPreviewPage& b, const std::vector<std::size_t>& units)
        : m_a(a.Dots()), m_b(b.Dots()), m_units(units), m_blank(m_a.BytesPerDot()), m_changes(a.Info().m_units.size())
    {
    }

    // Counts the changes of a row, and says of which kinds they are at each column.
    void Row_Compare(int row, std::vector<unsigned char>& kinds)
    {
        std::ranges::fill(kinds, static_cast<unsigned char>(0));
        for (std::size_t i = 0; i < kinds.size(); ++i)
        {
            const unsigned char* pA = Dot_Get(m_a, row, i);
            const unsigned char* pB = Dot_Get(m_b, row, i);
            if (IsBlankDot(pA, m_blank.size()) && IsBlankDot(pB, m_blank.size()))
            {
                continue;
            }
            for (const std::size_t unit : m_units)
            {
                kinds[i] |= Kind_Count(CSwathDots::Value_Get(pA, static_cast<int>(unit)),
                                       CSwathDots::Value_Get(pB, static_cast<int>(unit)), m_changes[unit]);
            }
        }
    }

    bool IsBlank() const { return m_a.IsBlank() && m_b.IsBlank(); }
    const std::vector<SDotChanges>& Changes_Get() const { return m_changes; }

private:
    const unsigned char* Dot_Get(const CSwathDots& dots, int row, std::size_t at) const
    {
        return dots.IsBlank() ? m_blank.data() : dots.Row_Get(row) + at * dots.BytesPerDot();
    }

    static unsigned char Kind_Count(int a, int b, SDotChanges& changes)
    {
        if (a == b)
        {
            changes.m_both += a != 0 ? 1 : 0;
            return a != 0 ? CChangeReduction::Kind_Both : 0;
        }
        if (a == 0 || b == 0)
        {
            ++(b == 0 ? changes.m_onlyA : changes.m_onlyB);
            return b == 0 ? CChangeReduction::Kind_OnlyA : CChangeReduction::Kind_OnlyB;
        }
        ++changes.m_size;
        return CChangeReduction::Kind_Size;
    }

    const CSwathDots& m_a;
    const CSwathDots& m_b;
    const std::vector<std::size_t>& m_units;
    std::vector<unsigned char> m_blank; // a dot
    std::vector<SDotChanges> m_changes;
};

} // namespace

CPreviewPage::CPreviewPage(const std::filesystem::path& output, std::optional<int> page)
    : m_bands(output, page), m_dots(m_bands.Model())
{
}

void CPreviewPage::Swath_Take(int swath)
{
    if (m_bands.Swath_Read(swath))
    {
        m_dots.Load(m_bands.Band());
    }
    else
    {
        m_dots.Clear();
    }
}

std::int64_t SPreviewArea::Width() const
{
    return CRowReduction::Reduced_Of(m_columnCount, m_reduce);
}

std::int64_t SPreviewArea::Height() const
{
    return CRowReduction::Reduced_Of(m_rowCount, m_reduce);
}

SPreviewArea PreviewArea_Whole(const SBoardInfo& info, bool bZones)
{
    SPreviewArea area;
    area.m_rowCount = info.m_pageHeight;
    area.m_columnCount = info.m_pageWidth;
    if (bZones && info.m_leftZone + info.m_rightZone > 0)
    {
        area.m_rowCount = (area.m_rowCount + info.m_nozzles - 1) / info.m_nozzles * info.m_nozzles;
        area.m_firstColumn = -info.m_leftZone;
        area.m_columnCount += std::int64_t{info.m_leftZone} + info.m_rightZone;
    }
    return area;
}

int Reduction_Choose(const SPreviewArea& area, int most)
{
    const std::int64_t longest = std::max(area.m_rowCount, area.m_columnCount);
    return static_cast<int>(std::clamp<std::int64_t>((longest + most - 1) / most, 1, g_mostReduction));
}

void Preview_Compose(CPreviewPage& page, const SPreviewArea& area, const std::vector<std::uint32_t>& colors,
                     CByteSink& sink, const OnSwath& onSwath)
{
    const CSwathDots& dots = page.Dots();
    const std::size_t size = dots.BytesPerDot();
    const CInks inks(colors, dots.PixelBits(), size);
    const CGround ground(page.Info(), area);
    CPngWriter writer(sink, Format_Make(page.Info(), area, EPngPixels::Color), tooLarge);
    CRowReduction reduction(writer, area.m_columnCount, channelCount, area.m_reduce);
    std::vector<unsigned char> pixels(static_cast<std::size_t>(area.m_columnCount) * channelCount);
    Rows_Walk(
        page.Bands().Model(), area,
        [&](int swath)
        {
            onSwath(swath);
            page.Swath_Take(swath);
        },
        [&](std::int64_t pageRow, int row)
        {
            ground.Row_Put(pageRow, pixels.data());
            const unsigned char* pDot = dots.IsBlank() ? nullptr : Dots_Get(dots, area, row);
            for (std::int64_t i = 0; i < area.m_columnCount && pDot != nullptr; ++i, pDot += size)
            {
                if (!IsBlankDot(pDot, size))
                {
                    inks.Dot_Put(pDot, ground.Color_Get(pageRow, area.m_firstColumn + i),
                                 pixels.data() + i * channelCount);
                }
            }
            reduction.Row_Add(pixels.data());
        });
    reduction.Finish();
    page.Finish();
}

void Preview_Plane(CPreviewPage& page, const SPreviewArea& area, std::size_t unit, CByteSink& sink,
                   const OnSwath& onSwath)
{
    const CSwathDots& dots = page.Dots();
    const int most = dots.PixelBits() == 2 ? 3 : 1;
    CPngWriter writer(sink, Format_Make(page.Info(), area, EPngPixels::Grey), tooLarge);
    CRowReduction reduction(writer, area.m_columnCount, 1, area.m_reduce);
    std::vector<unsigned char> pixels(static_cast<std::size_t>(area.m_columnCount));
    Rows_Walk(
        page.Bands().Model(), area,
        [&](int swath)
        {
            onSwath(swath);
            page.Swath_Take(swath);
        },
        [&](std::int64_t /*pageRow*/, int row)
        {
            std::ranges::fill(pixels, static_cast<unsigned char>(255));
            const unsigned char* pDot = dots.IsBlank() ? nullptr : Dots_Get(dots, area, row);
            for (std::int64_t i = 0; i < area.m_columnCount && pDot != nullptr; ++i, pDot += dots.BytesPerDot())
            {
                pixels[static_cast<std::size_t>(i)] = static_cast<unsigned char>(
                    255 - 255 * std::min(CSwathDots::Value_Get(pDot, static_cast<int>(unit)), most) / most);
            }
            reduction.Row_Add(pixels.data());
        });
    reduction.Finish();
    page.Finish();
}

std::vector<SDotChanges> Preview_Diff(CPreviewPage& a, CPreviewPage& b, const SPreviewArea& area,
                                      const std::vector<std::size_t>& units, CByteSink& sink, const OnSwath& onSwath)
{
    const CGround ground(a.Info(), area);
    CPngWriter writer(sink, Format_Make(a.Info(), area, EPngPixels::Color), tooLarge);
    CChangeReduction reduction(writer, ground, area);
    CChangeFinder finder(a, b, units);
    // All dots are compared, also those that the picture does not show.
    SPreviewArea whole = area;
    whole.m_firstRow = 0;
    whole.m_rowCount = std::int64_t{a.Bands().Model().SwathCount()} * a.Info().m_nozzles;
    std::vector<unsigned char> kinds(static_cast<std::size_t>(a.Dots().ColumnCount()));
    Rows_Walk(
        a.Bands().Model(), whole,
        [&](int swath)
        {
            onSwath(swath);
            a.Swath_Take(swath);
            b.Swath_Take(swath);
            std::ranges::fill(kinds, static_cast<unsigned char>(0));
        },
        [&](std::int64_t pageRow, int row)
        {
            if (!finder.IsBlank())
            {
                finder.Row_Compare(row, kinds);
            }
            if (pageRow >= area.m_firstRow && pageRow < area.m_firstRow + area.m_rowCount)
            {
                reduction.Row_Add(kinds.data() + (area.m_firstColumn - a.Dots().FirstColumn()));
            }
        });
    writer.Finish();
    a.Finish();
    b.Finish();
    return finder.Changes_Get();
}

void Shapes_Check(const CPreviewPage& a, const CPreviewPage& b)
{
    const std::string names = Name_Shown(a.Bands().Reader().Name()) + " and " + Name_Shown(b.Bands().Reader().Name());
    const auto Refuse = [&](const std::string& what, const std::string& ofA, const std::string& ofB)
    {
        throw CInputError(names + ": the pages have not the same shape: " + what + " is " + ofA + " and " + ofB +
                          "; only outputs of one page and carriage can be compared");
    };
    const auto Check = [&](const char* pWhat, std::int64_t ofA, std::int64_t ofB)
    {
        if (ofA != ofB)
        {
            Refuse(pWhat, std::to_string(ofA), std::to_string(ofB));
        }
    };
    const auto Units_List = [](const SBoardInfo& info)
    {
        std::string list;
        for (const SBoardUnitInfo& unit : info.m_units)
        {
            list += (list.empty() ? "" : ", ") + std::to_string(unit.m_unitId);
        }
        return "[" + list + "]";
    };
    Check("Page.Width", a.Info().m_pageWidth, b.Info().m_pageWidth);
    Check("Page.Height", a.Info().m_pageHeight, b.Info().m_pageHeight);
    Check("Nozzles", a.Info().m_nozzles, b.Info().m_nozzles);
    Check("LeftStripeWidth", a.Info().m_leftZone, b.Info().m_leftZone);
    Check("RightStripeWidth", a.Info().m_rightZone, b.Info().m_rightZone);
    const std::string unitsOfA = Units_List(a.Info());
    const std::string unitsOfB = Units_List(b.Info());
    if (unitsOfA != unitsOfB)
    {
        Refuse("the list of UnitIds", unitsOfA, unitsOfB);
    }
}
