// Lines are made by the model and compared as bytes; only bytes that differ are looked at bit by bit.
#include "Host/Model/BandComparison.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <functional>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>

namespace
{

constexpr std::int64_t partBytes = std::int64_t{1} << 17;
constexpr int mostPartLines = 256;
constexpr std::size_t mostPatternUnits = 16; // beyond them, a common cause is not looked for by unit
constexpr std::size_t mostShiftedLines = 64;
constexpr int mostShift = 64; // lines or bits

const unsigned char* Line_Of(const CBandData& band, int line)
{
    return band.m_pData + std::int64_t{line} * band.m_bytesPerLine;
}

std::size_t Hash_Of(const unsigned char* pBytes, std::size_t size)
{
    return std::hash<std::string_view>()(std::string_view(reinterpret_cast<const char*>(pBytes), size));
}

bool Bit_Get(const unsigned char* pLine, std::int64_t bit)
{
    return (pLine[bit / 8] >> (7 - bit % 8) & 1) == 1;
}

SUnitDifference& Unit_Get(SBandDifference& difference, int unitId, int line)
{
    const auto found = std::ranges::lower_bound(difference.m_units, unitId, {}, &SUnitDifference::m_unitId);
    if (found != difference.m_units.end() && found->m_unitId == unitId)
    {
        return *found;
    }
    SUnitDifference unit;
    unit.m_unitId = unitId;
    unit.m_firstLine = line;
    unit.m_lastLine = line;
    return *difference.m_units.insert(found, unit);
}

} // namespace

struct CBandComparison::SPart
{
    int m_firstLine = 0;
    int m_lineCount = 0;
    SBandDifference m_difference;
};

CBandComparison::CBandComparison(const CPageModel& model, int threadCount)
    : m_model(model),
      m_threadCount(threadCount > 0 ? threadCount
                                    : static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U))),
      m_partLines(static_cast<int>(
          std::clamp<std::int64_t>(partBytes / std::max<std::int64_t>(model.LineBytes(), 1), 1, mostPartLines))),
      m_owners(static_cast<std::size_t>(model.LineBytes()) * 8)
{
    const std::vector<SBoardUnitInfo>& units = model.Info().m_units;
    for (std::int64_t bit = 0; bit < model.LineBits(); ++bit)
    {
        const SModelSource source = model.Source_Of(0, {0, bit});
        if (source.m_pUnit != nullptr && source.m_nozzle >= 0)
        {
            m_owners[static_cast<std::size_t>(bit)] = {static_cast<int>(source.m_pUnit - units.data()),
                                                       source.m_nozzle};
        }
    }
}

SBandDifference CBandComparison::Compare(int swath, const CBandData& band, const CModelInk& ink, std::size_t most,
                                         const std::function<bool()>& goOn) const
{
    const int lineCount = std::min(band.m_height, m_model.LineCount(m_model.IsLeftToRight(swath)));
    std::vector<SPart> parts;
    for (int line = 0; line < lineCount; line += m_partLines)
    {
        parts.push_back({line, std::min(m_partLines, lineCount - line), {}});
    }
    std::atomic<std::size_t> next{0};
    const auto Stop = [&] { next = parts.size(); };
    const auto Work = [&](const std::function<bool()>& goOnHere)
    {
        for (std::size_t i = next++; i < parts.size(); i = next++)
        {
            Part_Compare(swath, band, ink, most, parts[i]);
            if (goOnHere && !goOnHere())
            {
                Stop();
            }
        }
    };
    std::vector<std::exception_ptr> errors(static_cast<std::size_t>(m_threadCount));
    const auto Work_Safely = [&](std::size_t thread, const std::function<bool()>& goOnHere)
    {
        try
        {
            Work(goOnHere);
        }
        catch (...)
        {
            errors[thread] = std::current_exception();
            Stop();
        }
    };
    std::vector<std::thread> threads;
    threads.reserve(errors.size());
    for (std::size_t i = 1; i < errors.size() && i < parts.size(); ++i)
    {
        try
        {
            threads.emplace_back(Work_Safely, i, std::function<bool()>());
        }
        catch (const std::system_error&)
        {
            break; // there is no thread to be had; those that run do the work
        }
    }
    Work_Safely(0, goOn);
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    for (const std::exception_ptr& error : errors)
    {
        if (error != nullptr)
        {
            std::rethrow_exception(error);
        }
    }
    SBandDifference difference;
    Parts_Merge(parts, most, difference);
    return difference;
}

void CBandComparison::Part_Compare(int swath, const CBandData& band, const CModelInk& ink, std::size_t most,
                                   SPart& part) const
{
    const auto lineBytes = static_cast<std::size_t>(m_model.LineBytes());
    std::vector<unsigned char> expected(lineBytes * static_cast<std::size_t>(part.m_lineCount));
    m_model.Lines_Make(swath, part.m_firstLine, expected, ink);
    for (int i = 0; i < part.m_lineCount; ++i)
    {
        const unsigned char* pExpected = expected.data() + lineBytes * static_cast<std::size_t>(i);
        const unsigned char* pFound = Line_Of(band, part.m_firstLine + i);
        if (std::memcmp(pExpected, pFound, lineBytes) != 0)
        {
            Line_Compare(swath, part.m_firstLine + i, pExpected, pFound, most, part.m_difference);
        }
    }
}

void CBandComparison::Line_Compare(int swath, int line, const unsigned char* pExpected, const unsigned char* pFound,
                                   std::size_t most, SBandDifference& difference) const
{
    ++difference.m_lineCount;
    const std::int64_t lineBytes = m_model.LineBytes();
    for (std::int64_t byte = 0; byte < lineBytes; ++byte)
    {
        const unsigned char wrong = pExpected[byte] ^ pFound[byte];
        for (std::int64_t bit = byte * 8; wrong != 0 && bit < byte * 8 + 8; ++bit)
        {
            if ((wrong >> (7 - bit % 8) & 1) == 0)
            {
                continue;
            }
            const SBitDifference found = {{line, bit}, Bit_Get(pFound, bit)};
            Bit_Count(swath, found, difference);
            if (difference.m_first.size() < most)
            {
                difference.m_first.push_back(found);
            }
        }
    }
}

void CBandComparison::Bit_Count(int swath, const SBitDifference& bit, SBandDifference& difference) const
{
    const SOwner& owner = m_owners[static_cast<std::size_t>(bit.m_bit.m_bit)];
    const SBoardUnitInfo* pUnit =
        owner.m_unit < 0 ? nullptr : &m_model.Info().m_units[static_cast<std::size_t>(owner.m_unit)];
    const int line = bit.m_bit.m_line;
    SUnitDifference& unit = Unit_Get(difference, pUnit == nullptr ? -1 : pUnit->m_unitId, line);
    ++(bit.m_bFound ? unit.m_extra : unit.m_missing);
    unit.m_firstLine = std::min(unit.m_firstLine, line);
    unit.m_lastLine = std::max(unit.m_lastLine, line);
    if (pUnit != nullptr)
    {
        const int position = line / m_model.Info().m_linesPerPosition;
        const EModelArea area = m_model.Point_Get(*pUnit, owner.m_nozzle, position, swath).m_area;
        ++unit.m_areas[static_cast<std::size_t>(area)];
    }
    ++difference.m_count;
}

void CBandComparison::Parts_Merge(std::vector<SPart>& parts, std::size_t most, SBandDifference& difference) const
{
    for (const SPart& part : parts)
    {
        difference.m_count += part.m_difference.m_count;
        difference.m_lineCount += part.m_difference.m_lineCount;
        for (const SBitDifference& bit : part.m_difference.m_first)
        {
            if (difference.m_first.size() < most)
            {
                difference.m_first.push_back(bit);
            }
        }
        for (const SUnitDifference& add : part.m_difference.m_units)
        {
            SUnitDifference& unit = Unit_Get(difference, add.m_unitId, add.m_firstLine);
            unit.m_missing += add.m_missing;
            unit.m_extra += add.m_extra;
            unit.m_lastLine = std::max(unit.m_lastLine, add.m_lastLine);
            std::ranges::transform(unit.m_areas, add.m_areas, unit.m_areas.begin(), std::plus<>());
        }
    }
}

namespace
{

std::string Shift_Text(int shift, const char* pOne, const char* pMany)
{
    const int count = std::abs(shift);
    return std::to_string(count) + ' ' + (count == 1 ? pOne : pMany) + (shift > 0 ? " later" : " earlier");
}

// The lines of a band as numbers, equal for equal lines.
struct SLineHashes
{
    std::vector<std::size_t> m_expected;
    std::vector<std::size_t> m_found;

    std::int64_t Count() const { return static_cast<std::int64_t>(m_expected.size()); }
    bool Differs(std::int64_t line) const
    {
        return m_expected[static_cast<std::size_t>(line)] != m_found[static_cast<std::size_t>(line)];
    }

    // Whether every line that differs, from `first` on, is the one that stands at `from(line)` in the model.
    template<class TFrom>
    bool IsMoved(std::int64_t first, std::int64_t last, TFrom from) const
    {
        std::int64_t moved = 0;
        for (std::int64_t line = first; line <= last; ++line)
        {
            const std::int64_t source = from(line);
            if (source < 0 || source >= Count())
            {
                continue;
            }
            if (m_found[static_cast<std::size_t>(line)] != m_expected[static_cast<std::size_t>(source)])
            {
                return false;
            }
            ++moved;
        }
        return moved > 1;
    }
};

std::optional<std::string> Lines_Pattern(const SLineHashes& lines, int linesPerPosition)
{
    std::int64_t first = 0;
    std::int64_t last = lines.Count() - 1;
    while (first <= last && !lines.Differs(first))
    {
        ++first;
    }
    while (last > first && !lines.Differs(last))
    {
        --last;
    }
    const std::int64_t positions = lines.Count() / linesPerPosition;
    if (lines.IsMoved(0, lines.Count() - 1,
                      [&](std::int64_t line) {
                          return (positions - 1 - line / linesPerPosition) * linesPerPosition + line % linesPerPosition;
                      }))
    {
        return "the scan positions stand in reverse order: the pass runs the other way";
    }
    for (int shift = 1; shift <= mostShift; ++shift)
    {
        for (const int signedShift : {shift, -shift})
        {
            if (lines.IsMoved(first, last, [&](std::int64_t line) { return line - signedShift; }))
            {
                return "lines " + std::to_string(first) + " to " + std::to_string(last) + " stand " +
                       Shift_Text(signedShift, "line", "lines") + " than they should";
            }
        }
    }
    return std::nullopt;
}

std::optional<std::string> Shift_Pattern(int line, const unsigned char* pExpected, const unsigned char* pFound,
                                         std::int64_t bits)
{
    for (int shift = 1; shift <= mostShift && shift < bits; ++shift)
    {
        for (const int signedShift : {shift, -shift})
        {
            bool bMoved = true;
            bool bInk = false;
            for (std::int64_t bit = 0; bit < bits && bMoved; ++bit)
            {
                const std::int64_t source = bit - signedShift;
                const bool bFound = Bit_Get(pFound, bit);
                bMoved = source < 0 || source >= bits || bFound == Bit_Get(pExpected, source);
                bInk = bInk || bFound;
            }
            if (bMoved && bInk)
            {
                return "the bits of line " + std::to_string(line) + " stand " + Shift_Text(signedShift, "bit", "bits") +
                       " than they should";
            }
        }
    }
    return std::nullopt;
}

} // namespace

void CBandComparison::Patterns_Find(int swath, const CBandData& band, const CModelInk& ink,
                                    SBandDifference& difference) const
{
    const int lineCount = m_model.LineCount(m_model.IsLeftToRight(swath));
    const auto lineBytes = static_cast<std::size_t>(m_model.LineBytes());
    if (band.m_height != lineCount || difference.m_count < 2)
    {
        return;
    }
    // Bits of each unit that differs, in the order of their nozzles.
    const std::vector<SBoardUnitInfo>& infos = m_model.Info().m_units;
    std::vector<std::size_t> units;
    for (std::size_t i = 0; i < infos.size() && infos.size() <= mostPatternUnits; ++i)
    {
        if (std::ranges::any_of(difference.m_units,
                                [&](const SUnitDifference& unit) { return unit.m_unitId == infos[i].m_unitId; }))
        {
            units.push_back(i);
        }
    }
    std::vector<std::vector<std::int64_t>> unitBits;
    for (const std::size_t unit : units)
    {
        unitBits.emplace_back();
        for (int nozzle = 0; nozzle < m_model.Info().m_nozzles; ++nozzle)
        {
            for (const SModelBit& bit : m_model.Bits_Of(infos[unit], nozzle, 0))
            {
                if (bit.m_line == 0)
                {
                    unitBits.back().push_back(bit.m_bit);
                }
            }
        }
    }
    std::vector<std::vector<bool>> taken(units.size(), std::vector<bool>(units.size(), true)); // [has][what of]
    SLineHashes hashes;
    std::vector<unsigned char> expected;
    std::size_t inkLines = 0;
    bool bBlank = true;
    for (int first = 0; first < lineCount; first += m_partLines)
    {
        const int count = std::min(m_partLines, lineCount - first);
        expected.assign(lineBytes * static_cast<std::size_t>(count), 0);
        m_model.Lines_Make(swath, first, expected, ink);
        for (int i = 0; i < count; ++i)
        {
            const unsigned char* pExpected = expected.data() + lineBytes * static_cast<std::size_t>(i);
            const unsigned char* pFound = Line_Of(band, first + i);
            hashes.m_expected.push_back(Hash_Of(pExpected, lineBytes));
            hashes.m_found.push_back(Hash_Of(pFound, lineBytes));
            bBlank = bBlank && std::all_of(pFound, pFound + lineBytes, [](unsigned char byte) { return byte == 0; });
            if (std::memcmp(pExpected, pFound, lineBytes) == 0)
            {
                continue;
            }
            if (++inkLines <= mostShiftedLines && difference.m_lineCount <= static_cast<std::int64_t>(mostShiftedLines))
            {
                if (const auto text = Shift_Pattern(first + i, pExpected, pFound, m_model.LineBits()))
                {
                    difference.m_patterns.push_back(*text);
                }
            }
            for (std::size_t has = 0; has < units.size(); ++has)
            {
                for (std::size_t of = 0; of < units.size(); ++of)
                {
                    if (has == of || !taken[has][of])
                    {
                        continue;
                    }
                    bool bEqual = unitBits[has].size() == unitBits[of].size();
                    for (std::size_t bit = 0; bEqual && bit < unitBits[has].size(); ++bit)
                    {
                        bEqual = Bit_Get(pFound, unitBits[has][bit]) == Bit_Get(pExpected, unitBits[of][bit]);
                    }
                    taken[has][of] = bEqual;
                }
            }
        }
    }
    if (bBlank)
    {
        difference.m_patterns = {"the band is blank"};
        return;
    }
    if (const auto text = Lines_Pattern(hashes, m_model.Info().m_linesPerPosition))
    {
        difference.m_patterns = {*text};
        return;
    }
    for (std::size_t has = 0; has < units.size(); ++has)
    {
        for (std::size_t of = 0; of < units.size(); ++of)
        {
            if (has != of && taken[has][of])
            {
                difference.m_patterns.push_back("where it differs, unit " + std::to_string(infos[units[has]].m_unitId) +
                                                " has the bits of unit " + std::to_string(infos[units[of]].m_unitId));
            }
        }
    }
}
