// boardmap convert --trace from outside: the file is the trace format that viewers read, and says of a run what is
// known of it anyway: every band once, queues that are never shorter than empty, threads that do one thing at a time.
#include "Tests/Host/Command/CommandSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <set>

using testing::HasSubstr;

namespace
{

using CJson = nlohmann::json;

constexpr int width = 70;
constexpr int height = 103;
constexpr int nozzles = 8;
constexpr int swaths = 13;

struct SSpan
{
    std::string m_name;
    double m_begin = 0; // microseconds
    double m_end = 0;
    CJson m_arguments;
};

struct STrace
{
    std::map<int, std::string> m_threads;
    std::map<std::string, std::vector<SSpan>> m_spans; // by thread
    std::map<std::string, std::vector<int>> m_counts;  // by counter

    std::vector<SSpan> Spans_Get(const std::string& thread, const std::string& name) const
    {
        std::vector<SSpan> spans;
        const auto found = m_spans.find(thread);
        if (found != m_spans.end())
        {
            std::ranges::copy_if(found->second, std::back_inserter(spans),
                                 [&](const SSpan& span) { return span.m_name == name; });
        }
        return spans;
    }
};

class Trace : public CCommandTest
{
protected:
    void Page_Write() const
    {
        Separation_Write("c.tif", width, height, [](int x, int y) { return (x + y) % 3 == 0; });
        Separation_Write("k.tif", width, height, [](int x, int y) { return (x * y) % 5 == 0; });
    }

    STrace Trace_Read(const std::string& file) const
    {
        STrace trace;
        const CJson json = CJson::parse(File_Read(In(file)));
        for (const CJson& event : json.at("traceEvents"))
        {
            const std::string kind = event.at("ph");
            EXPECT_EQ(event.at("pid"), 1);
            if (kind == "M")
            {
                if (event.at("name") == "thread_name")
                {
                    trace.m_threads[event.at("tid")] = event.at("args").at("name");
                }
                continue;
            }
            const double begin = event.at("ts");
            EXPECT_GE(begin, 0);
            if (kind == "C")
            {
                trace.m_counts[event.at("name")].push_back(event.at("args").at("bands"));
                continue;
            }
            EXPECT_EQ(kind, "X");
            const double duration = event.at("dur");
            EXPECT_GE(duration, 0);
            EXPECT_TRUE(trace.m_threads.contains(event.at("tid"))) << event;
            trace.m_spans[trace.m_threads[event.at("tid")]].push_back(
                {event.at("name"), begin, begin + duration, event.at("args")});
        }
        return trace;
    }

    // What a thread does, it does one after the other: no span of a track lies across the end of another.
    static void Nesting_Check(const STrace& trace)
    {
        constexpr double rounding = 0.001; // of a sum of two decimal numbers
        for (const auto& [thread, unsorted] : trace.m_spans)
        {
            std::vector<SSpan> spans = unsorted;
            std::ranges::stable_sort(spans, {}, &SSpan::m_begin);
            for (std::size_t i = 1; i < spans.size(); ++i)
            {
                const SSpan& before = spans[i - 1];
                EXPECT_TRUE(spans[i].m_begin >= before.m_end - rounding || spans[i].m_end <= before.m_end + rounding)
                    << thread << ": " << before.m_name << " to " << before.m_end << ", " << spans[i].m_name << " from "
                    << spans[i].m_begin << " to " << spans[i].m_end;
            }
        }
    }

    static void Bands_Check(const std::vector<SSpan>& spans, const CJson& result)
    {
        ASSERT_EQ(spans.size(), result.at("Bands").get<std::size_t>());
        std::int64_t lines = 0;
        std::int64_t bytes = 0;
        int band = 0;
        for (const SSpan& span : spans)
        {
            EXPECT_EQ(span.m_arguments.at("band"), band);
            EXPECT_EQ(span.m_arguments.at("swath"), band++);
            EXPECT_EQ(span.m_arguments.at("page"), 0);
            lines += span.m_arguments.at("lines").get<std::int64_t>();
            bytes += span.m_arguments.at("bytes").get<std::int64_t>();
        }
        EXPECT_EQ(lines, result.at("Lines"));
        EXPECT_EQ(bytes, result.at("Bytes"));
    }
};

} // namespace

TEST_F(Trace, SaysOfEveryStageWhatItsThreadsDid)
{
    Page_Write();
    for (const std::string stage : {"ink-stripe", "base", "one-fifo"})
    {
        Job_Write("job.toml", {"c.tif", "k.tif"}, nozzles, "[Stage]\nKind = \"" + stage + "\"\n");
        const auto result = Boardmap_Run("convert job.toml --json --trace t.json --progress none");
        ASSERT_EQ(result.status, 0) << result.error;
        const CJson summary = CJson::parse(result.out);
        const STrace trace = Trace_Read("t.json");
        std::set<std::string> threads;
        std::ranges::transform(trace.m_threads, std::inserter(threads, threads.end()),
                               [](const auto& thread) { return thread.second; });
        std::set<std::string> expected = {"stage " + stage, "writer", "unit 0", "unit 1"};
        if (stage == "one-fifo")
        {
            expected.insert("band set feeder");
        }
        EXPECT_EQ(threads, expected);
        Nesting_Check(trace);
        Bands_Check(trace.Spans_Get("stage " + stage, "map"), summary);
        Bands_Check(trace.Spans_Get("writer", "write"), summary);
        for (const std::string unit : {"unit 0", "unit 1"})
        {
            const auto reads = trace.Spans_Get(unit, "read");
            const auto turns = trace.Spans_Get(unit, "turn");
            ASSERT_EQ(reads.size(), std::size_t{swaths});
            ASSERT_EQ(turns.size(), std::size_t{swaths});
            int rows = 0;
            for (int swath = 0; swath < swaths; ++swath)
            {
                const auto at = static_cast<std::size_t>(swath);
                EXPECT_EQ(reads[at].m_arguments.at("swath"), swath);
                EXPECT_EQ(turns[at].m_arguments.at("swath"), swath);
                EXPECT_LE(reads[at].m_end, turns[at].m_begin + 0.001);
                rows += reads[at].m_arguments.at("rows").get<int>();
            }
            EXPECT_EQ(rows, height);
        }
        std::set<std::string> counters = {"queue output", "queue unit 0", "queue unit 1"};
        if (stage == "one-fifo")
        {
            counters.insert("queue band sets");
        }
        for (const auto& [name, counts] : trace.m_counts)
        {
            EXPECT_EQ(counters.erase(name), 1U) << name;
            EXPECT_EQ(counts.front(), 0) << name;
            EXPECT_EQ(counts.back(), 0) << stage << ' ' << name << ": every band was taken";
            EXPECT_GE(std::ranges::min(counts), 0) << name;
            constexpr int mostWaiting = 4; // the pool's 3, 3 board bands and the one on its way
            EXPECT_LE(std::ranges::max(counts), mostWaiting) << name;
            const auto raised = std::ranges::adjacent_find(counts, [](int a, int b) { return std::abs(b - a) != 1; });
            EXPECT_TRUE(raised == counts.end()) << name;
        }
        EXPECT_TRUE(counters.empty());
    }
}

#if !defined(_WIN32)

TEST_F(Trace, ShowsWhoWaitsForASlowReader)
{
    Separation_Write("c.tif", 3000, 640, [](int x, int y) { return (x + y) % 3 == 0; });
    for (const std::string stage : {"ink-stripe", "one-fifo"})
    {
        Job_Write("job.toml", {"c.tif"}, 32, "[Stage]\nKind = \"" + stage + "\"\n");
        const auto result = Shell_Run("$boardmap convert job.toml --format raw -o - --trace t.json --progress none | "
                                      "(sleep 2; cat > out.raw)");
        ASSERT_EQ(result.status, 0) << result.error;
        const STrace trace = Trace_Read("t.json");
        Nesting_Check(trace);
        double waited = 0;
        for (const SSpan& stall : trace.Spans_Get("stage " + stage, "stall"))
        {
            waited += stall.m_arguments.at("on") == "queue output" ? stall.m_end - stall.m_begin : 0;
        }
        EXPECT_GT(waited, 0) << stage << ": the output was full";
        EXPECT_FALSE(trace.Spans_Get("unit 0", "stall").empty()) << "the pool was empty";
    }
}

#endif

TEST_F(Trace, IsNotThereWithoutACompleteRun)
{
    Page_Write();
    Job_Write("job.toml", {"c.tif", "k.tif"}, nozzles);
    std::string broken = File_Read(In("k.tif"));
    broken.replace(8, 40, std::string(40, '\x7F'));
    File_Write(In("k.tif"), broken);
    const auto result = Boardmap_Run("convert job.toml --trace t.json --progress none");
    EXPECT_NE(result.status, 0);
    EXPECT_FALSE(std::filesystem::exists(In("t.json")));
}

TEST_F(Trace, DoesNotTakeThePlaceOfAFileOfTheRun)
{
    Page_Write();
    Job_Write("job.toml", {"c.tif", "k.tif"}, nozzles);
    for (const std::string name : {"c.tif", "job.toml", "job.boards.tif", "-", "none/t.json"})
    {
        const std::string before = std::filesystem::exists(In(name)) ? File_Read(In(name)) : "";
        const auto result = Boardmap_Run("convert job.toml --progress none --trace " + name);
        EXPECT_EQ(result.status, 2) << name;
        EXPECT_THAT(result.error, HasSubstr(name));
        EXPECT_EQ(std::filesystem::exists(In(name)) ? File_Read(In(name)) : "", before) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(In("job.boards.tif")));
}
