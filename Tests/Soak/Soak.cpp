// The long run: one process that converts random jobs for hours, as a controller does for weeks.
//     Soak --hours H [--seed S]
//
// Each job is a random one of every map, stage, pass and stripe. Most run to their end, with a consumer that rests now
// and then, and are held bit by bit against the model of the board; the others are stopped somewhere on the way, at any
// moment after the start. Between two jobs nothing of the last one may be left: memory, open files and threads are
// looked at there, and compared between the run's first quarter and its last. Exit status 1 for a difference, a job
// that fails, or growth. The same seed makes the same jobs.
#include "Tests/Fuzz/ConvertedJob.h"
#include "Tests/Host/Command/RandomJob.h"

#include <chrono>
#include <iostream>
#include <sstream>
#include <thread>

namespace
{

using Clock = std::chrono::steady_clock;

// What this process has right now, as the system counts it.
struct SUsage
{
    std::int64_t memory = 0;  // resident, KiB
    std::int64_t handles = 0; // open file descriptors
    std::int64_t threads = 0;
};

SUsage Usage_Get()
{
    SUsage usage;
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
    {
        if (word == "VmRSS:")
        {
            status >> usage.memory;
        }
        else if (word == "Threads:")
        {
            status >> usage.threads;
        }
    }
    const std::filesystem::directory_iterator handles("/proc/self/fd");
    usage.handles = std::distance(begin(handles), end(handles));
    return usage;
}

SUsage Most_Of(const SUsage& one, const SUsage& other)
{
    return {std::max(one.memory, other.memory), std::max(one.handles, other.handles),
            std::max(one.threads, other.threads)};
}

struct STotal
{
    std::int64_t jobs = 0;    // to their end
    std::int64_t stopped = 0; // on the way
    std::int64_t refused = 0; // random jobs that cannot run
    std::int64_t bands = 0;
    std::int64_t bytes = 0;
};

class CSoak : public CRandomJobTest
{
public:
    explicit CSoak(unsigned seed) { m_random.seed(seed); }

    // One job. Throws for whatever is not as it should be.
    void Job_Next()
    {
        Job_WriteRandom(Number(0, static_cast<int>(randomBoards.size()) - 1));
        std::ofstream(In("job.toml"), std::ios::app)
            << "[DPConfig]\nLineGeneratorCount_Of_DataMap = " << Number(1, 6) << '\n';
        CMistakeList mistakes;
        CJobPage page(In("job.toml"), mistakes);
        if (!page.HasPage())
        {
            ++m_total.refused;
            return;
        }
        if (Number(0, 3) == 0)
        {
            Job_Stop(page);
            ++m_total.stopped;
            return;
        }
        const CJobPage checked(In("job.toml"));
        Job_Convert(page, checked);
        const SVerifyResult result = Output_Verify(checked, In("boards.raw"));
        if (result.m_differenceCount != 0)
        {
            throw std::runtime_error("verify finds differences: " + result.m_differences.front().m_what);
        }
        ++m_total.jobs;
        m_total.bands += result.m_bands;
        m_total.bytes += result.m_bytes;
    }

    std::string JobText() const { return File_Read(In("job.toml")); }
    const STotal& Total() const { return m_total; }

private:
    void TestBody() override {}

    // Mostly nothing, now and then a short rest, seldom a long one.
    void Rest()
    {
        const int chance = Number(0, 199);
        if (chance < 30)
        {
            std::this_thread::sleep_for(chance == 0 ? std::chrono::milliseconds(120)
                                                    : std::chrono::milliseconds(chance / 10));
        }
    }

    void Job_Convert(CJobPage& page, const CJobPage& checked)
    {
        const auto writer = BoardWriter_Make(checked, In("boards.raw"), EBoardFormat::Raw);
        CConversion conversion(page);
        conversion.Start();
        for (;;)
        {
            Rest();
            CBandData* next = nullptr;
            if (conversion.Output()->Out(next, 20))
            {
                writer->Band_Write(*std::unique_ptr<CBandData>(next));
            }
            else if (conversion.Output()->IsCompleted())
            {
                break;
            }
            conversion.Error_Check();
        }
        conversion.Error_Check();
        writer->Finish();
    }

    // Takes some bands and goes, wherever the threads are.
    void Job_Stop(CJobPage& page)
    {
        CConversion conversion(page);
        if (Number(0, 9) == 0)
        {
            return; // never started
        }
        conversion.Start();
        const int wanted = Number(0, 4);
        for (int taken = 0; taken < wanted; ++taken)
        {
            CBandData* next = nullptr;
            if (!conversion.Output()->Out(next, 20))
            {
                break;
            }
            const std::unique_ptr<CBandData> band(next);
            if (band->m_bandNo != taken)
            {
                throw std::runtime_error("a band is missing or out of order");
            }
        }
        std::this_thread::sleep_for(std::chrono::microseconds(Number(0, 3) * Number(0, 2000)));
    }

    STotal m_total;
};

// The most of the first and of the last quarter of the run. What comes before the first tenth is warming up.
class CUsageWatch
{
public:
    void Look(double part, const SUsage& usage)
    {
        if (part >= 0.1 && part < 0.35)
        {
            m_early = Most_Of(m_early, usage);
        }
        else if (part >= 0.75)
        {
            m_late = Most_Of(m_late, usage);
        }
    }

    // What has grown by more than it may; empty if nothing. Sleeping threads are kept for the next job, and the general
    // allocator keeps memory for each of them, so that both move within bounds.
    std::string Growth() const
    {
        constexpr std::int64_t threadsKept = 8;
        constexpr std::int64_t memoryKept = 12 * 1024;
        std::ostringstream text;
        const auto compare = [&](const char* what, std::int64_t early, std::int64_t late, std::int64_t allowed)
        {
            if (late > early + allowed)
            {
                text << what << " grew from " << early << " to " << late << "; ";
            }
        };
        compare("memory (KiB)", m_early.memory, m_late.memory, memoryKept + m_early.memory / 20);
        compare("open files", m_early.handles, m_late.handles, 0);
        compare("threads", m_early.threads, m_late.threads, threadsKept);
        return text.str();
    }

    const SUsage& Early() const { return m_early; }
    const SUsage& Late() const { return m_late; }

private:
    SUsage m_early;
    SUsage m_late;
};

void Line_Write(double seconds, const STotal& total, const SUsage& usage)
{
    std::cout << static_cast<std::int64_t>(seconds) << " s: " << total.jobs << " jobs verified, " << total.stopped
              << " stopped, " << total.refused << " refused, " << total.bands << " bands, " << total.bytes
              << " bytes; memory " << usage.memory << " KiB, " << usage.handles << " open files, " << usage.threads
              << " threads" << std::endl;
}

int Soak_Run(double hours, unsigned seed)
{
    const double limit = hours * 3600;
    const double lineEvery = std::max(10.0, limit / 60);
    const auto begin = Clock::now();
    CSoak soak(seed);
    CUsageWatch watch;
    double seconds = 0;
    double nextLine = lineEvery;
    try
    {
        while (seconds < limit)
        {
            soak.Job_Next();
            seconds = std::chrono::duration<double>(Clock::now() - begin).count();
            const SUsage usage = Usage_Get();
            watch.Look(seconds / limit, usage);
            if (seconds >= nextLine)
            {
                Line_Write(seconds, soak.Total(), usage);
                nextLine += lineEvery;
            }
        }
    }
    catch (const std::exception& error)
    {
        std::cout << "seed " << seed << ", job " << soak.Total().jobs << ": " << error.what() << "\nthe job was:\n"
                  << soak.JobText() << std::flush;
        return 1;
    }
    Line_Write(seconds, soak.Total(), Usage_Get());
    std::cout << "most in the first quarter: " << watch.Early().memory << " KiB, " << watch.Early().handles
              << " open files, " << watch.Early().threads << " threads; in the last: " << watch.Late().memory
              << " KiB, " << watch.Late().handles << " open files, " << watch.Late().threads << " threads\n";
    constexpr double leastToCompare = 60; // s; a shorter run has not settled
    const std::string growth = limit < leastToCompare ? "" : watch.Growth();
    std::cout << (growth.empty() ? "nothing lost, nothing grew" : growth) << std::endl;
    return growth.empty() && soak.Total().jobs > 0 ? 0 : 1;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    double hours = 0;
    unsigned long seed = 1;
    for (int i = 1; i + 1 < argumentCount; i += 2)
    {
        const std::string name = arguments[i];
        hours = name == "--hours" ? std::strtod(arguments[i + 1], nullptr) : hours;
        seed = name == "--seed" ? std::strtoul(arguments[i + 1], nullptr, 10) : seed;
    }
    if (!(hours > 0))
    {
        std::cerr << "usage: Soak --hours H [--seed S]\n";
        return 2;
    }
    return Soak_Run(hours, static_cast<unsigned>(seed));
}
