// The ink-stripe stage from end to end, band after band: unit bands in, board bands out, in steady state.
//
//   StageBench [--curves generators|units|frame|nozzles|inflight|none] [--units N] [--generators N] [--nozzles N]
//              [--lines N] [--frame BITS] [--inflight N] [--bits 1|2] [--pattern noise|full|none|checker]
//              [--stripes N] [--kernel NAME] [--bands N] [--rounds N] [--json FILE]
//
// One producer thread gives filled bands as fast as the stage takes them, without touching their pixels; the main
// thread takes the board bands and deletes them. A figure is the time from one board band to the next, held against a
// plain copy of the same bytes on one core, measured in turns with it. Without options it measures the table: the
// goal's band (16 units, 400 nozzles, 35,000 lines, 2 generators), other numbers of generators, other contents, and one
// and two generators on lines that the scalar kernel maps, where neither memory nor the hand-over of lines is the wall.
// The rows of several generators and of short bands are measured on the plain edition of the platform, too, in turns
// with the embedded one. --curves varies one parameter and leaves the others. README.md beside this file tells how to
// read the result.
#include "Benchmarks/Figures.h"
#include "Benchmarks/StageRun.h"
#include "Platform/BandData/BandMemory.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace
{

// A plain copy of `size` bytes on one core, from and to memory that is warm.
class CCopy
{
public:
    explicit CCopy(std::size_t size) : m_from(size, 1), m_to(size, 2) {}

    double Seconds()
    {
        return Seconds_Of([this] { std::memcpy(m_to.data(), m_from.data(), m_from.size()); });
    }

private:
    std::vector<unsigned char> m_from;
    std::vector<unsigned char> m_to;
};

constexpr int tallBand = 1000; // lines

struct SEffort
{
    int rounds;
    int bands; // per round
};

// The same case on the plain edition of the platform, which needs a program of its own.
class CPlainEdition
{
public:
    // `program`: this benchmark's own path; the other one lies beside it.
    explicit CPlainEdition(const std::string& program)
        : m_program((std::filesystem::path(program).parent_path() / "StageBandSeconds_Plain").string())
    {
    }

    // Appends the seconds of `effort.bands` bands, after as many that are not counted.
    void Bands_Take(const SStageCase& one, const SEffort& effort, std::vector<double>& seconds) const
    {
        const std::string number = std::to_string(effort.bands);
        const std::string command = m_program + ' ' + one.Options() + " --warm " + number + " --bands " + number;
        const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), &pclose);
        Require(output != nullptr, "the plain edition's program");
        int boardBytes = 0;
        Require(std::fscanf(output.get(), "%d", &boardBytes) == 1, "the plain edition's board bytes");
        for (double band = 0; std::fscanf(output.get(), "%lf", &band) == 1;)
        {
            seconds.push_back(band);
        }
    }

private:
    std::string m_program;
};

// `plain`: null, or where the case is measured in turns with this edition.
void Case_Measure(CFigures& figures, const SStageCase& one, const SEffort& effort, const std::string& name,
                  const std::string& goal, const CPlainEdition* plain = nullptr)
{
    const CKernelInUse kernel(one.kernel);
    CStageRun run(one);
    run.Bands_Take(effort.bands); // memory and threads become warm
    CCopy copy(static_cast<std::size_t>(run.BoardBytes()));
    copy.Seconds();
    const auto freshBefore = CBandMemory::Statistic_Get().m_freshBlocks;
    std::vector<double> bands;
    std::vector<double> plainBands;
    std::vector<double> copies;
    for (int round = 0; round < effort.rounds; ++round)
    {
        const auto seconds = run.Bands_Take(effort.bands);
        bands.insert(bands.end(), seconds.begin(), seconds.end());
        for (int i = 0; i < 3; ++i)
        {
            copies.push_back(copy.Seconds());
        }
        if (plain != nullptr)
        {
            plain->Bands_Take(one, effort, plainBands);
        }
    }
    const double band = Median_Of(bands);
    figures.Add({name, goal, run.BoardBytes() / band / 1e9, "GB/s", Median_Of(copies) / band});
    const auto fresh = CBandMemory::Statistic_Get().m_freshBlocks - freshBefore;
    figures.Add({"  fresh blocks per band, " + name, "0", static_cast<double>(fresh) / (effort.rounds * effort.bands),
                 "blocks", 0});
    if (plain != nullptr)
    {
        const double plainBand = Median_Of(plainBands);
        figures.Add({"  on the plain edition, " + name, "", run.BoardBytes() / plainBand / 1e9, "GB/s",
                     Median_Of(copies) / plainBand});
        figures.Add(
            {"  plain against embedded, " + name, one.lines >= tallBand ? ">= 0.85" : "", band / plainBand, "x", 0});
    }
}

std::string Name_Of(const SStageCase& one)
{
    return "stage, " + std::to_string(one.units) + " units x " + std::to_string(one.nozzles) + " x " +
           std::to_string(one.lines) + (one.kernel.empty() ? "" : ", kernel " + one.kernel) + ", " +
           std::to_string(one.generators) + " generators";
}

void Table_Measure(CFigures& figures, const SStageCase& base, const SEffort& effort, const CPlainEdition& plain)
{
    for (const int generators : {1, 2, 4})
    {
        SStageCase one = base;
        one.generators = generators;
        Case_Measure(figures, one, effort, Name_Of(one), generators == 2 ? ">= 0.75 x copy" : "", &plain);
    }
    SStageCase shortBand = base;
    shortBand.lines = 100;
    Case_Measure(figures, shortBand, {effort.rounds, effort.bands * 20}, Name_Of(shortBand), "", &plain);
    for (const int generators : {1, 2})
    {
        SStageCase one = base;
        one.kernel = "scalar";
        one.nozzles = 4096;
        one.lines = std::max(base.lines / 10, 20);
        one.generators = generators;
        Case_Measure(figures, one, effort, Name_Of(one), "");
    }
    for (const char* pattern : {"full", "none", "checker"})
    {
        SStageCase one = base;
        one.pattern = pattern;
        Case_Measure(figures, one, effort, std::string("stage, all lines: ") + pattern, "");
    }
    SStageCase twoBits = base;
    twoBits.bits = 2;
    twoBits.frame = 32;
    Case_Measure(figures, twoBits, effort, "stage, 2-bit pixels into 32-bit frames", "");
    SStageCase stripes = base;
    stripes.units = base.units / 2;
    stripes.stripes = base.units - stripes.units;
    Case_Measure(figures, stripes, effort, "stage, half of the units print stripes", "");
}

// Varies one parameter.
void Curve_Measure(CFigures& figures, const SStageCase& base, const SEffort& effort, const std::string& what)
{
    struct SCurve
    {
        const char* name;
        int SStageCase::*parameter;
        std::vector<int> values;
    };
    const SCurve curves[] = {
        {"generators", &SStageCase::generators, {1, 2, 3, 4, 6, 8}},
        {"units", &SStageCase::units, {1, 2, 4, 8, 12, 16}},
        {"frame", &SStageCase::frame, {16, 32, 64, 128}},
        {"nozzles", &SStageCase::nozzles, {100, 200, 400, 1000, 2000, 4096}},
        {"inflight", &SStageCase::inFlight, {1, 2, 3, 4, 6}},
    };
    for (const SCurve& curve : curves)
    {
        if (what != curve.name)
        {
            continue;
        }
        for (const int value : curve.values)
        {
            SStageCase one = base;
            one.*curve.parameter = value;
            Case_Measure(figures, one, effort, "curve " + what + ' ' + std::to_string(value), "");
        }
        return;
    }
    Require(false, "a curve: generators, units, frame, nozzles, inflight");
}

} // namespace

int main(int argumentCount, char** arguments)
{
    try
    {
        std::map<std::string, std::string> options = {
            {"--curves", "none"}, {"--units", "16"},  {"--generators", "2"}, {"--nozzles", "400"},
            {"--lines", "35000"}, {"--frame", "16"},  {"--inflight", "3"},   {"--bits", "1"},
            {"--pattern", ""},    {"--stripes", "0"}, {"--rounds", "5"},     {"--bands", "9"},
            {"--kernel", ""},     {"--json", ""},
        };
        Options_Read(argumentCount, arguments, options);
        const auto number = [&](const char* name) { return std::stoi(options[name]); };
        SStageCase one;
        for (const char* name : {"--units", "--generators", "--nozzles", "--lines", "--frame", "--inflight", "--bits",
                                 "--stripes", "--kernel"})
        {
            one.Option_Set(name, options[name]);
        }
        one.pattern = options["--pattern"].empty() ? one.pattern : options["--pattern"];
        const SEffort effort = {number("--rounds"), number("--bands")};
        CFigures figures;
        if (options["--curves"] != "none")
        {
            Curve_Measure(figures, one, effort, options["--curves"]);
        }
        else if (!options["--pattern"].empty())
        {
            Case_Measure(figures, one, effort, Name_Of(one) + ", " + one.pattern, "");
        }
        else
        {
            Table_Measure(figures, one, effort, CPlainEdition(arguments[0]));
        }
        if (!options["--json"].empty())
        {
            figures.Json_Write(options["--json"]);
        }
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "StageBench: %s\n", error.what());
        return 1;
    }
}
