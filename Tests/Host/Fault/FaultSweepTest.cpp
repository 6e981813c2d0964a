// Every call of boardmap to the system fails once: each allocation, thread start, read, write, seek, rename and close,
// found by counting and failed one by one. Whatever fails, the program ends by itself and in time, with an exit status
// of 0 (then everything is as without the fault), 1 or 2 (then it has said why, in one plain line), its output is whole
// or absent, and nothing else is left in the folder.
//
// FAULT_STRIDE says how many calls of a kind lie between two that fail: 1 is the whole sweep, which takes minutes.
// Kinds with few calls are always swept whole. FAULT_ONLY="KIND" looks at one kind alone.
#include "Tests/Host/Command/CommandSupport.h"
#include "Tests/Host/Fault/FaultRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iostream>
#include <regex>

namespace
{

// A command, and which files it may leave.
struct SScenario
{
    std::string m_name;
    std::vector<std::string> m_words;   // the program's name first
    std::vector<std::string> m_outputs; // files that it makes: each whole or as it was before
    std::string m_log;                  // a file that is appended to, record by record
    bool m_bFigures = false;            // what it prints has times in it
    bool m_bTells = false;              // its answer, on standard output, can be that something is wrong
    bool m_bExample = false;            // not boardmap, but the program that users begin with
};

// Every number as #, with its unit: times, rates and memory differ from run to run.
std::string Figures_Drop(const std::string& text)
{
    static const std::regex figure("[0-9]+(\\.[0-9]+)?(e-?[0-9]+)?( [kMG]?B)?");
    return std::regex_replace(text, figure, "#");
}

// Log records that went to standard error, since the log did not take them, are no error of the command.
std::string Records_Drop(const std::string& text)
{
    static const std::regex record("[0-9:.]+ (debug|info |ERROR) [^\n]*\n");
    return std::regex_replace(text, record, "");
}

// What is wrong with the words of a failure, or nothing. Every mistake of the input has a line of its own. Where
// reading failed, they say so, and find no fault with what a file holds.
std::string Error_Wrong(const std::string& kind, const std::string& text, int status)
{
    constexpr int inputStatus = 2;
    const auto lines = std::count(text.begin(), text.end(), '\n');
    if (lines < 1 || (lines > 1 && status != inputStatus) || text.back() != '\n' || text.size() < 8)
    {
        return "is not one line";
    }
    for (const char* pRaw :
         {"terminate called", "std::", "bad_alloc", "basic_", "vector", "filesystem error", "what()", "failure ("})
    {
        if (text.find(pRaw) != std::string::npos)
        {
            return std::string("is not plain: ") + pRaw;
        }
    }
    if ((kind == "read" || kind == "seek") && text.find("Input/output error") == std::string::npos)
    {
        return "does not say that reading failed";
    }
    return "";
}

class CFaultSweep : public CCommandTest
{
protected:
    void SetUp() override
    {
        Separation_Write("a.tif", 61, 40, [](int x, int y) { return (x * y + x) % 5 == 0; });
        Separation_Write("b.tif", 61, 40, [](int x, int y) { return (x + y) % 3 == 0; });
        Job_Write("job.toml", {"a.tif", "b.tif"}, 16);
        Job_Write("one.toml", {"a.tif", "b.tif"}, 16, "[Stage]\nKind = \"one-fifo\"\n");
        Job_Write("base.toml", {"a.tif"}, 16, "[Stage]\nKind = \"base\"\nSkipBlank = true\n");
        ASSERT_EQ(Boardmap_Run("convert job.toml -o page.tif").status, 0);
        ASSERT_EQ(Boardmap_Run("convert job.toml -o page.raw --format raw").status, 0);
        ASSERT_EQ(Boardmap_Run("convert job.toml -o part-0.raw --format raw --bands 0").status, 0);
        ASSERT_EQ(Boardmap_Run("convert job.toml -o part-1.raw --format raw --bands 1..").status, 0);
        File_Write(In("old.tif"), "an older result");
        for (const std::string& name : m_folder.Names())
        {
            m_before[name] = File_Read(In(name));
        }
    }

    void Sweep(const SScenario& scenario);

    std::map<std::string, std::string> m_before; // the folder, as every run finds it

private:
    // Puts the folder back as it was.
    void Folder_Restore(const SFaultRun& last)
    {
        for (const auto& [name, bytes] : last.m_files)
        {
            const auto before = m_before.find(name);
            if (before == m_before.end())
            {
                std::filesystem::remove(In(name));
            }
            else if (before->second != bytes)
            {
                File_Write(In(name), before->second);
            }
        }
    }

    // What is wrong with a run in which a call of this kind failed, or nothing.
    std::string Run_Wrong(const SScenario& scenario, const std::string& kind, const SFaultRun& run) const;
    std::string Files_Wrong(const SScenario& scenario, const SFaultRun& run) const;

    SFaultRun m_reference;
};

std::string CFaultSweep::Files_Wrong(const SScenario& scenario, const SFaultRun& run) const
{
    for (const auto& [name, bytes] : run.m_files)
    {
        const auto before = m_before.find(name);
        const auto whole = m_reference.m_files.find(name);
        const bool bAsBefore = before != m_before.end() && before->second == bytes;
        const bool bOutput = std::ranges::find(scenario.m_outputs, name) != scenario.m_outputs.end();
        const bool bWhole = bOutput && whole != m_reference.m_files.end() && whole->second == bytes;
        if (name != scenario.m_log && !bWhole && (!bAsBefore || (run.m_status == 0 && bOutput)))
        {
            return "left " + name + " of " + std::to_string(bytes.size()) + " bytes";
        }
    }
    for (const auto& [name, bytes] : m_before)
    {
        if (!run.m_files.contains(name))
        {
            return "took away " + name;
        }
    }
    for (const std::string& name : scenario.m_outputs)
    {
        if (run.m_status == 0 && !run.m_files.contains(name))
        {
            return "exit 0 without " + name;
        }
    }
    return "";
}

std::string CFaultSweep::Run_Wrong(const SScenario& scenario, const std::string& kind, const SFaultRun& run) const
{
    if (run.m_bHung || run.m_status < 0)
    {
        return run.m_bHung ? "hangs" : "ends by signal " + std::to_string(run.m_signal);
    }
    const auto Text = [&](const SFaultRun& of) { return scenario.m_bFigures ? Figures_Drop(of.m_out) : of.m_out; };
    const std::string error = scenario.m_log.empty() ? run.m_error : Records_Drop(run.m_error);
    if (run.m_status == 0 && (Text(run) != Text(m_reference) || !error.empty()))
    {
        return "exit 0 with another answer: " + run.m_out + error;
    }
    if (run.m_status != 0)
    {
        const bool bTold = (scenario.m_bTells && error.empty() && !run.m_out.empty()) || scenario.m_bExample;
        const std::string wrong = bTold ? "" : Error_Wrong(kind, error, run.m_status);
        if (run.m_status > 2 || !wrong.empty())
        {
            return run.m_status > 2 ? "exit " + std::to_string(run.m_status) : "its error " + wrong;
        }
    }
    return Files_Wrong(scenario, run);
}

void CFaultSweep::Sweep(const SScenario& scenario)
{
    const char* pStride = std::getenv("FAULT_STRIDE");
    const char* pOnly = std::getenv("FAULT_ONLY");
    const long stride = pStride == nullptr ? 97 : std::max(std::atol(pStride), 1L);
    m_reference = Fault_Run(scenario.m_words, m_folder.Path().string(), m_scratch.Path().string(), "");
    ASSERT_EQ(m_reference.m_status, 0) << m_reference.m_error;
    ASSERT_GT(m_reference.m_calls["memory"], 0);
    EXPECT_EQ(m_reference.m_calls["sync"] > 0, !scenario.m_outputs.empty()) << "outputs are brought to the disk";
    Folder_Restore(m_reference);
    std::map<std::string, std::pair<int, std::string>> findings; // how often, and the first time
    int runs = 0;
    std::map<int, int> statuses;
    for (const auto& [kind, calls] : m_reference.m_calls)
    {
        const long step = calls <= 80 ? 1 : stride;
        for (const long count : {1L, 3L})
        {
            for (long call = 1; call <= calls && (pOnly == nullptr || kind == pOnly); call += step)
            {
                const std::string fault = kind + ' ' + std::to_string(call) + ' ' + std::to_string(count);
                const SFaultRun run =
                    Fault_Run(scenario.m_words, m_folder.Path().string(), m_scratch.Path().string(), fault);
                ++runs;
                ++statuses[run.m_status];
                if (const std::string wrong = Run_Wrong(scenario, kind, run); !wrong.empty())
                {
                    auto& [times, first] = findings[kind + ": " + wrong];
                    first += ++times <= 4 ? " [" + fault + "] " + run.m_error : "";
                }
                Folder_Restore(run);
            }
        }
    }
    std::cout << scenario.m_name << ": " << runs << " faults;";
    for (const auto& [status, count] : statuses)
    {
        std::cout << ' ' << count << " times exit " << status;
    }
    std::cout << '\n';
    for (const auto& [what, finding] : findings)
    {
        ADD_FAILURE() << scenario.m_name << ": " << finding.first << " times: " << what << ": " << finding.second;
    }
}

const std::string program = BOARDMAP_PROGRAM;

TEST_F(CFaultSweep, ConvertToTiff)
{
    Sweep({"convert", {program, "convert", "job.toml", "-o", "old.tif"}, {"old.tif"}, "", true});
}

TEST_F(CFaultSweep, ConvertOneFIFOWithLogAndCompression)
{
    Sweep({"convert one-fifo",
           {program, "convert", "one.toml", "-o", "new.tif", "--compress", "deflate", "--log", "run.log"},
           {"new.tif"},
           "run.log",
           true});
}

TEST_F(CFaultSweep, ConvertBaseToRaw)
{
    Sweep({"convert base",
           {program, "convert", "base.toml", "-o", "new.raw", "--format", "raw", "--json"},
           {"new.raw"},
           "",
           true});
}

TEST_F(CFaultSweep, AnOutputWhoseOwnerCannotBeKeptIsRefusedAndStays)
{
    constexpr unsigned somebody = 12345;
    if (!File_GiveAway(In("old.tif").string(), somebody))
    {
        GTEST_SKIP() << "only the system's administrator may give a file away";
    }
    const std::vector<std::string> words = {program, "convert", "job.toml", "-o", "old.tif"};
    const auto Run = [&](const std::string& fault)
    { return Fault_Run(words, m_folder.Path().string(), m_scratch.Path().string(), fault); };
    SFaultRun run = Run("owner 1");
    EXPECT_EQ(run.m_status, 2);
    EXPECT_EQ(run.m_error, "old.tif: its owner and its access rights cannot be given to a new file; name another file, "
                           "or take this one away\n");
    EXPECT_EQ(run.m_files["old.tif"], "an older result");
    EXPECT_EQ(run.m_files.size(), m_before.size());
    EXPECT_EQ(File_Owner(In("old.tif").string()), somebody);
    run = Run("");
    EXPECT_EQ(run.m_status, 0);
    EXPECT_NE(run.m_files["old.tif"], "an older result");
    EXPECT_EQ(File_Owner(In("old.tif").string()), somebody);
}

TEST_F(CFaultSweep, Check)
{
    Sweep({"check", {program, "check", "job.toml", "--json"}, {}, "", false, true});
}

TEST_F(CFaultSweep, Init)
{
    Sweep({"init", {program, "init", "a.tif", "b.tif", "-o", "new.toml"}, {"new.toml"}, "", false});
}

TEST_F(CFaultSweep, Explain)
{
    Sweep({"explain",
           {program, "explain", "job.toml", "page.raw", "--band", "0", "--line", "5", "--byte", "3", "--bit", "1",
            "--json"},
           {},
           "",
           false});
}

TEST_F(CFaultSweep, Join)
{
    Sweep({"join",
           {program, "join", "part-1.raw", "part-0.raw", "-o", "old.tif", "--format", "tiff"},
           {"old.tif"},
           "",
           false});
}

TEST_F(CFaultSweep, Layout)
{
    Sweep({"layout", {program, "layout", "job.toml", "--png", "old.tif"}, {"old.tif"}, "", false});
}

TEST_F(CFaultSweep, LayoutAsJson)
{
    Sweep({"layout --json", {program, "layout", "job.toml", "--json"}, {}, "", false});
}

TEST_F(CFaultSweep, Preview)
{
    Sweep({"preview", {program, "preview", "page.raw", "-o", "old.tif", "--json"}, {"old.tif"}, "", false});
}

TEST_F(CFaultSweep, PreviewOfADifference)
{
    Sweep({"preview --diff",
           {program, "preview", "--diff", "page.raw", "page.tif", "-o", "new.png"},
           {"new.png"},
           "",
           false});
}

TEST_F(CFaultSweep, Report)
{
    Sweep({"report", {program, "report", "job.toml", "page.tif", "-o", "new.html"}, {"new.html"}, "", false, true});
}

TEST_F(CFaultSweep, Verify)
{
    Sweep({"verify", {program, "verify", "job.toml", "page.tif", "--json"}, {}, "", true, true});
}

TEST_F(CFaultSweep, Info)
{
    Sweep({"info", {program, "info", "page.tif", "--json"}, {}, "", false, true});
}

TEST_F(CFaultSweep, Kernels)
{
    Sweep({"kernels", {program, "kernels"}, {}, "", false});
}

TEST_F(CFaultSweep, TheReadmesExample)
{
    Sweep({"example", {README_EXAMPLE}, {}, "", false, false, true});
}

} // namespace
