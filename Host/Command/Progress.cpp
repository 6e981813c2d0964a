// The progress line and its numbers.
#include "Host/Command/Progress.h"

#include "Platform/Helper/ProcessHelper.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iostream>

namespace
{

constexpr std::chrono::milliseconds barPeriod(100);
constexpr std::chrono::milliseconds plainPeriod(1000);
constexpr int barColumns = 28;

EProgress Mode_Choose(EProgress wanted)
{
    if (wanted != EProgress::Auto)
    {
        return wanted;
    }
    return CProcessHelper::IsErrorTerminal() ? EProgress::Bar : EProgress::None;
}

} // namespace

CProgress::CProgress(EProgress mode, std::int64_t bandCount)
    : m_mode(Mode_Choose(mode)), m_bandCount(bandCount), m_begin(std::chrono::steady_clock::now()), m_nextDraw(m_begin)
{
}

CProgress::~CProgress()
{
    Clear();
}

void CProgress::Clear()
{
    if (m_mode == EProgress::Bar && m_bDrawn)
    {
        std::cerr << "\r\x1b[K" << std::flush;
        m_bDrawn = false;
    }
}

void CProgress::Update(std::int64_t bandsDone, std::int64_t bytesDone)
{
    const auto now = std::chrono::steady_clock::now();
    if (m_mode != EProgress::None && now >= m_nextDraw)
    {
        m_nextDraw = now + (m_mode == EProgress::Bar ? barPeriod : plainPeriod);
        Draw(bandsDone, bytesDone);
    }
}

void CProgress::Finish(std::int64_t bandsDone, std::int64_t bytesDone)
{
    if (m_mode == EProgress::None)
    {
        return;
    }
    Draw(bandsDone, bytesDone);
    if (m_mode == EProgress::Bar)
    {
        std::cerr << '\n' << std::flush;
        m_bDrawn = false;
    }
}

void CProgress::Draw(std::int64_t bandsDone, std::int64_t bytesDone)
{
    const auto elapsed = std::chrono::steady_clock::now() - m_begin;
    if (m_mode == EProgress::Bar)
    {
        const int width = CProcessHelper::TerminalWidth() - 1;
        std::cerr << '\r' << ProgressText_Make(bandsDone, m_bandCount, bytesDone, elapsed, width, barColumns)
                  << std::flush;
        m_bDrawn = true;
    }
    else
    {
        std::cerr << ProgressText_Make(bandsDone, m_bandCount, bytesDone, elapsed, 0, 0) << '\n' << std::flush;
    }
}

std::string ProgressText_Make(std::int64_t bandsDone, std::int64_t bandCount, std::int64_t bytesDone,
                              std::chrono::duration<double> elapsed, int width, int fill)
{
    std::string text = std::to_string(bandsDone) + '/' + std::to_string(bandCount) + " bands";
    if (bandsDone > 0 && elapsed.count() > 0)
    {
        const auto left = elapsed * (static_cast<double>(bandCount - bandsDone) / static_cast<double>(bandsDone));
        const std::string rate = "  " + ByteText_Make(static_cast<double>(bytesDone) / elapsed.count()) + "/s";
        const std::string time = "  " + TimeText_Make(left) + " left";
        // On a narrow terminal the time matters more than the rate, and either more than the bar.
        const auto Fits = [&](const std::string& more)
        { return width <= 0 || text.size() + more.size() <= static_cast<std::size_t>(width); };
        text += Fits(rate + time) ? rate + time : Fits(time) ? time : "";
    }
    constexpr int barFrame = 3; // its brackets and the space behind
    if (width > 0)
    {
        fill = std::min(fill, width - barFrame - static_cast<int>(text.size()));
    }
    if (fill > 0)
    {
        const double part = bandCount > 0 ? static_cast<double>(bandsDone) / static_cast<double>(bandCount) : 1.0;
        const int full = static_cast<int>(std::clamp(part, 0.0, 1.0) * fill);
        text = '[' + std::string(static_cast<std::size_t>(full), '#') +
               std::string(static_cast<std::size_t>(fill - full), '.') + "] " + text;
    }
    if (width > 0)
    {
        text.resize(static_cast<std::size_t>(width), ' ');
    }
    return text;
}

std::string ByteText_Make(double bytes)
{
    constexpr std::array units = {"B", "kB", "MB", "GB", "TB"};
    std::size_t unit = 0;
    while (bytes >= 999.5 && unit + 1 < units.size())
    {
        bytes /= 1000;
        ++unit;
    }
    std::array<char, 32> text = {};
    const int decimals = unit == 0 || bytes >= 99.95 ? 0 : bytes >= 9.995 ? 1 : 2;
    std::snprintf(text.data(), text.size(), "%.*f %s", decimals, bytes, units[unit]);
    return text.data();
}

std::string TimeText_Make(std::chrono::duration<double> time)
{
    const auto seconds = static_cast<long long>(std::ceil(std::max(time.count(), 0.0)));
    std::array<char, 48> text = {};
    if (seconds >= 3600)
    {
        std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
    }
    else
    {
        std::snprintf(text.data(), text.size(), "%lld:%02lld", seconds / 60, seconds % 60);
    }
    return text.data();
}
