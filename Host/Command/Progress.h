// What a person sees while a job runs: a bar on a terminal, plain lines elsewhere, or nothing. Written to standard
// error by the command's main thread; never blocks the data path.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

enum class EProgress
{
    Auto,  // a bar if standard error is a terminal, otherwise nothing
    Bar,   // a bar that redraws itself in place
    Plain, // one line every now and then
    None,
};

class CProgress
{
public:
    // `bandCount`: how many bands the job will make, at most.
    CProgress(EProgress mode, std::int64_t bandCount);
    // Takes an unfinished bar off the screen.
    ~CProgress();
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    // `bandsDone` bands, `bytesDone` bytes of board data are done. Cheap; draws a few times a second at most.
    void Update(std::int64_t bandsDone, std::int64_t bytesDone);

    // Takes the bar off the screen, until it is drawn again: something else is to be said.
    void Clear();

    // Draws the last state and leaves it on the screen.
    void Finish(std::int64_t bandsDone, std::int64_t bytesDone);

private:
    void Draw(std::int64_t bandsDone, std::int64_t bytesDone);

    EProgress m_mode; // never Auto
    std::int64_t m_bandCount;
    std::chrono::steady_clock::time_point m_begin;
    std::chrono::steady_clock::time_point m_nextDraw;
    bool m_bDrawn = false;
};

// The text of a progress line: bands, rate and time left, filled to exactly `width` columns if that is above 0. `fill`
// draws the bar, in that many columns at most; 0 leaves it out. Where the columns do not suffice, the bar shrinks and
// goes first, then the rate, then the time left; the bands are cut last.
std::string ProgressText_Make(std::int64_t bandsDone, std::int64_t bandCount, std::int64_t bytesDone,
                              std::chrono::duration<double> elapsed, int width, int fill);

// "1.2 GB", "340 MB", "17 kB", "5 B": three digits, powers of 1000.
std::string ByteText_Make(double bytes);

// "0:07", "12:34", "1:02:03".
std::string TimeText_Make(std::chrono::duration<double> time);
