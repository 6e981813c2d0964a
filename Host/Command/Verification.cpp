// Which band is which, and what about it differs.
#include "Host/Command/Verification.h"

#include "Host/Board/BandHeaderWords.h"
#include "Host/Command/Explanation.h"
#include "Host/HostError.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <utility>

namespace
{

constexpr std::size_t mostDifferences = 1000; // that are kept
constexpr int mostPatternBands = 3;
constexpr std::size_t mostBandBits = 3; // reported one by one, of a band

struct SPassWord
{
    const char* m_pName;
    std::int32_t SBoardPass::*m_pWord;
};

constexpr std::array passWords = {
    SPassWord{"Positions", &SBoardPass::m_positions},   SPassWord{"FirstLineColumn", &SBoardPass::m_firstLineColumn},
    SPassWord{"ColumnStep", &SBoardPass::m_columnStep}, SPassWord{"FirstZone", &SBoardPass::m_firstZone},
    SPassWord{"LastZone", &SBoardPass::m_lastZone},     SPassWord{"MaxOffset", &SBoardPass::m_maxOffset},
};

std::string Unequal_Text(const std::string& name, const std::string& found, const std::string& expected)
{
    return name + " is " + found + "; it should be " + expected;
}

// Who wrote the file says nothing of the board data. Files of version 1 say these only.
bool Key_IsCompared(const std::string& key, int version)
{
    if (key == "/Generator" || key == "/Version")
    {
        return false;
    }
    constexpr std::array early = {"/DataMapStyle", "/DataPushStyle", "/PrinterSupportBits", "/Map", "/PrinterDataWidth",
                                  "/BitsPerUnit",  "/Nozzles",       "/BitsPerPixel"};
    return version > 1 || std::ranges::find(early, key) != early.end() || key.ends_with("/UnitId") ||
           key.ends_with("/Direction") || key.ends_with("/Name");
}

} // namespace

CVerification::CVerification(const CJobPage& page, CBoardReader& reader, SBandRange range, std::size_t mostBits,
                             std::function<bool(std::int64_t bands, std::int64_t bytes)> onProgress)
    : m_reader(reader),
      m_range(range),
      m_mostBits(mostBits),
      m_patternBands(mostPatternBands),
      m_onProgress(std::move(onProgress)),
      m_info(Page_BoardInfo(page, reader.BoardInfo().m_generator)),
      m_model(m_info),
      m_ink(page),
      m_comparison(m_model)
{
}

SVerifyResult CVerification::Run()
{
    const auto begin = std::chrono::steady_clock::now();
    Info_Compare();
    const SBoardInfo& found = m_reader.BoardInfo();
    m_stepEnd = m_info.StepCount();
    if (found.IsPart() && found.m_partLast < m_stepEnd)
    {
        m_step = found.m_partFirst;
        m_stepEnd = found.m_partLast + 1;
    }
    if (m_range.m_first >= m_stepEnd - m_step)
    {
        throw CInputError(std::string("--bands: the ") + (found.IsPart() ? "part" : "job") + " has " +
                          std::to_string(m_stepEnd - m_step) + " bands, from 0 on");
    }
    while (!m_result.m_bInterrupted && !IsBehind() && Band_Next())
    {
    }
    if (!m_result.m_bInterrupted && !IsBehind())
    {
        m_bandPlace.clear();
        Steps_Miss(m_stepEnd);
    }
    m_result.m_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return std::move(m_result);
}

SDifference& CVerification::Add(const std::string& kind, std::int64_t step, const std::string& what)
{
    ++m_result.m_differenceCount;
    SDifference difference;
    difference.m_kind = kind;
    difference.m_page = step < 0 ? -1 : Page_Of(step);
    difference.m_swath = step < 0 ? -1 : Swath_Of(step);
    difference.m_band = step < 0 ? -1 : m_bandNo;
    difference.m_place = kind == "info" || kind == "missing" ? "" : m_bandPlace;
    difference.m_what = what;
    if (m_result.m_differences.size() >= mostDifferences)
    {
        m_result.m_differences.pop_back(); // the last is the newest
    }
    return m_result.m_differences.emplace_back(std::move(difference));
}

void CVerification::Info_Compare()
{
    const SBoardInfo& foundInfo = m_reader.BoardInfo();
    const auto expected = nlohmann::json::parse(BoardInfo_Json(m_info)).flatten();
    const auto found = nlohmann::json::parse(BoardInfo_Json(foundInfo)).flatten();
    for (const auto& [key, value] : expected.items())
    {
        if (!Key_IsCompared(key, foundInfo.m_version))
        {
            continue;
        }
        const std::string name = key.substr(1);
        if (!found.contains(key))
        {
            Add("info", -1, "the board info has no " + name + "; it should be " + value.dump());
        }
        else if (found[key] != value)
        {
            Add("info", -1, "the board info's " + Unequal_Text(name, found[key].dump(), value.dump()));
        }
    }
    for (const auto& [key, value] : found.items())
    {
        if (key.starts_with("/Pages/") && !expected.contains(key))
        {
            Add("info", -1, "the board info has " + key.substr(1) + " " + value.dump() + "; the job has one page");
        }
    }
    if (foundInfo.m_units.size() > m_info.m_units.size())
    {
        Add("info", -1,
            "the board info has " + std::to_string(foundInfo.m_units.size()) + " units; the job has " +
                std::to_string(m_info.m_units.size()));
    }
}

bool CVerification::Band_Next()
{
    try
    {
        if (!m_reader.Band_Read(m_band, m_pass))
        {
            return false;
        }
    }
    catch (const CBoardDamageError& error)
    {
        const SBoardDamage& damage = error.Damage_Get();
        m_bandPlace = damage.m_offset >= 0 ? "byte " + std::to_string(damage.m_offset)
                      : damage.m_page >= 0 ? "page " + std::to_string(damage.m_page)
                                           : "";
        Add("damage", -1, damage.m_what + (damage.m_fix.empty() ? "" : "; " + damage.m_fix));
        return m_reader.Resume();
    }
    m_bandPlace = m_reader.Place();
    Band_Take();
    return true;
}

bool CVerification::IsSkipped(std::int64_t step)
{
    if (!m_info.m_bSkipBlank)
    {
        return false;
    }
    Ink_Read(step);
    return m_model.IsSkipped(Swath_Of(step), m_ink);
}

std::string CVerification::Step_Text(std::int64_t step) const
{
    if (m_model.PageCount() == 1)
    {
        return "swath " + std::to_string(step);
    }
    return "page " + std::to_string(Page_Of(step)) + ", swath " + std::to_string(Swath_Of(step));
}

// A page that contradicts the band's number, which fits all else, is the wrong word of the two.
std::int64_t CVerification::Page_Guess() const
{
    const std::int64_t swaths = m_model.SwathCount();
    const std::int64_t byNumber = m_reader.BoardInfo().FirstStep() + m_band.m_bandNo;
    const bool bNumber = !m_info.m_bSkipBlank && m_band.m_bandNo >= 0 && byNumber % swaths == m_band.m_swathIndex &&
                         byNumber < m_info.StepCount();
    if (m_model.PageCount() == 1 || bNumber)
    {
        return m_model.PageCount() == 1 ? 0 : byNumber / swaths;
    }
    return m_band.m_pageIndex >= 0 && m_band.m_pageIndex < m_model.PageCount() ? m_band.m_pageIndex : m_step / swaths;
}

// A header with one wrong word is still known by the others; without any that agree, the band is the next one.
std::int64_t CVerification::Step_Guess() const
{
    const std::int64_t before = Page_Guess() * m_model.SwathCount(); // swaths of the pages before
    const std::int64_t byIndex = m_band.m_swathIndex;
    const std::int64_t byRow =
        m_band.m_firstRow % m_info.m_nozzles == 0 ? m_band.m_firstRow / m_info.m_nozzles : std::int64_t{-1};
    const std::int64_t byNumber =
        (m_info.m_bSkipBlank ? m_step : m_reader.BoardInfo().FirstStep() + m_band.m_bandNo) - before;
    const bool bIndex = byIndex == byRow || (byIndex == byNumber && !m_info.m_bSkipBlank);
    const std::int64_t swath = bIndex ? byIndex : byRow == byNumber ? byRow : m_step - before;
    const std::int64_t step = before + swath;
    const bool bUsable = step >= 0 && step <= std::numeric_limits<int>::max();
    return bUsable ? step : m_step;
}

bool CVerification::Steps_Miss(std::int64_t step)
{
    for (; m_step < step; ++m_step)
    {
        if (IsSkipped(m_step))
        {
            continue;
        }
        if (IsBehind())
        {
            return false;
        }
        if (m_range.Has(m_bandNo))
        {
            Add("missing", m_step, "this band is missing");
        }
        ++m_bandNo;
    }
    return true;
}

void CVerification::Band_Take()
{
    const std::int64_t step = Step_Guess();
    if (step >= m_stepEnd)
    {
        Add("extra", -1,
            "there is a band of " + Step_Text(step) + "; the " +
                (m_reader.BoardInfo().IsPart() ? "part ends with " + Step_Text(m_stepEnd - 1)
                 : m_model.PageCount() > 1     ? "last page of the job is " + std::to_string(m_model.PageCount() - 1)
                                               : "page has " + std::to_string(m_model.SwathCount()) + " swaths"));
        return;
    }
    if (step < m_step)
    {
        Add("order", -1,
            "there is a band of " + Step_Text(step) + ", which stands twice or too late; its bits were not compared");
        return;
    }
    if (!Steps_Miss(step) || IsBehind())
    {
        return;
    }
    if (IsSkipped(step))
    {
        Add("extra", -1, "there is a band of " + Step_Text(step) + ", which has no ink and is left out with SkipBlank");
        ++m_step;
        return;
    }
    if (m_range.Has(m_bandNo))
    {
        Ink_Read(step);
        Band_Compare(step);
        ++m_result.m_bands;
        m_result.m_lines += m_band.m_height;
        m_result.m_bytes += m_band.m_dataSize;
    }
    ++m_step;
    ++m_bandNo;
    m_result.m_bInterrupted = m_result.m_bInterrupted || !m_onProgress(m_result.m_bands, m_result.m_bytes);
}

void CVerification::Band_Compare(std::int64_t step)
{
    Header_Compare(step);
    if (m_reader.BoardInfo().m_version > 1)
    {
        Pass_Compare(step);
    }
    const int lineCount = m_model.LineCount(m_model.IsLeftToRight(Swath_Of(step)));
    if (m_band.m_width != m_model.LineBits() || m_band.m_bitsPerPixel != 1)
    {
        Add("size", step,
            Unequal_Text("the line's length", std::to_string(m_band.m_width) + " bits",
                         std::to_string(m_model.LineBits())) +
                "; its bits were not compared");
        return;
    }
    if (m_band.m_bytesPerLine != m_model.LineBytes())
    {
        Add("size", step,
            Unequal_Text("the number of bytes of a line", std::to_string(m_band.m_bytesPerLine),
                         std::to_string(m_model.LineBytes())));
    }
    if (m_band.m_height != lineCount)
    {
        Add("size", step,
            Unequal_Text("the number of lines", std::to_string(m_band.m_height), std::to_string(lineCount)));
    }
    Bits_Compare(step);
}

void CVerification::Header_Compare(std::int64_t step)
{
    const SBandHeader expected = m_model.Header_Get(Swath_Of(step), m_bandNo, m_ink, Page_Of(step));
    for (const SBandHeaderWord& word : g_bandHeaderWords)
    {
        if (m_band.*word.m_pWord != expected.*word.m_pWord)
        {
            Add("header", step,
                Unequal_Text(std::string(word.m_name), std::to_string(m_band.*word.m_pWord),
                             std::to_string(expected.*word.m_pWord)));
        }
    }
    if (m_band.m_bSkip != expected.m_bSkip)
    {
        Add("header", step,
            Unequal_Text("m_bSkip", m_band.m_bSkip ? "true" : "false", expected.m_bSkip ? "true" : "false"));
    }
}

void CVerification::Pass_Compare(std::int64_t step)
{
    const SBoardPass expected = m_model.Pass_Get(Swath_Of(step));
    for (const SPassWord& word : passWords)
    {
        if (m_pass.*word.m_pWord != expected.*word.m_pWord)
        {
            Add("pass", step,
                Unequal_Text(word.m_pName, std::to_string(m_pass.*word.m_pWord),
                             std::to_string(expected.*word.m_pWord)));
        }
    }
    if (m_pass.m_bLeftToRight != expected.m_bLeftToRight && m_pass.m_columnStep == expected.m_columnStep)
    {
        Add("pass", step, "Direction and ColumnStep contradict each other");
    }
    if (const bool bBlank = Band_IsBlank(m_band); m_pass.m_bBlank != bBlank)
    {
        Add("pass", step,
            std::string("Blank is ") + (bBlank ? "false; not a bit of the band is set" : "true; the band has ink"));
    }
}

void CVerification::Bits_Compare(std::int64_t step)
{
    const auto GoOn = [&]
    {
        const bool bGoOn = m_onProgress(m_result.m_bands, m_result.m_bytes);
        m_result.m_bInterrupted = m_result.m_bInterrupted || !bGoOn;
        return bGoOn;
    };
    SBandDifference bits =
        m_comparison.Compare(Swath_Of(step), m_band, m_ink, std::min(m_mostBits, mostBandBits), GoOn);
    if (bits.m_count == 0 || m_result.m_bInterrupted)
    {
        return;
    }
    if (m_patternBands > 0)
    {
        --m_patternBands;
        m_comparison.Patterns_Find(Swath_Of(step), m_band, m_ink, bits);
    }
    m_mostBits -= bits.m_first.size();
    m_result.m_bitDifferences += bits.m_count;
    SDifference& difference =
        Add("bits", step, bits.m_count == 1 ? "1 bit differs" : std::to_string(bits.m_count) + " bits differ");
    for (const SBitDifference& bit : bits.m_first)
    {
        difference.m_first.push_back(Bit_Report(step, bit.m_bit));
    }
    difference.m_bits = std::move(bits);
}

SBitReport CVerification::Bit_Report(std::int64_t step, const SModelBit& bit) const
{
    const SExplanation explanation =
        Bit_Explain({m_model, &m_ink, &m_band, Page_Of(step)}, Swath_Of(step), m_bandNo, bit);
    return {Explanation_Text(explanation, m_info), Explanation_Json(explanation, m_info)};
}
