// Events into steps of time.
#include "Host/Report/TracePlots.h"

#include "Host/HostError.h"
#include "Host/InputFile.h"
#include "Host/PathText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

using CJson = nlohmann::ordered_json;

constexpr int stepCount = 400;
constexpr double microsecondsPerSecond = 1e6;

struct SSpan
{
    double m_begin = 0; // microseconds
    double m_end = 0;
    double m_bytes = 0;
};

struct SCounterValue
{
    double m_time = 0;
    double m_bands = 0;
};

// What the plots are made of.
struct SRun
{
    double m_end = 0;                                   // microseconds, from 0
    std::map<std::string, std::vector<SSpan>> m_moving; // "mapping", "writing"
    std::map<std::string, std::vector<SCounterValue>> m_counters;
    std::map<std::int64_t, std::string> m_threads;       // names, by tid
    std::map<std::int64_t, std::vector<SSpan>> m_stalls; // by tid
};

double Time_Get(const CJson& event, const char* pName)
{
    const double time = event.at(pName).get<double>();
    if (!std::isfinite(time) || time < 0)
    {
        throw std::runtime_error(std::string(pName) + " is no time");
    }
    return time;
}

void Event_Add(const CJson& event, SRun& run)
{
    const std::string kind = event.at("ph").get<std::string>();
    const std::string name = event.at("name").get<std::string>();
    if (kind == "M")
    {
        if (name == "thread_name")
        {
            run.m_threads[event.at("tid").get<std::int64_t>()] = event.at("args").at("name").get<std::string>();
        }
        return;
    }
    if (kind == "C")
    {
        const double time = Time_Get(event, "ts");
        run.m_counters[name].push_back({time, event.at("args").at("bands").get<double>()});
        run.m_end = std::max(run.m_end, time);
        return;
    }
    if (kind != "X")
    {
        return;
    }
    SSpan span;
    span.m_begin = Time_Get(event, "ts");
    span.m_end = span.m_begin + Time_Get(event, "dur");
    run.m_end = std::max(run.m_end, span.m_end);
    if (name == "stall")
    {
        run.m_stalls[event.at("tid").get<std::int64_t>()].push_back(span);
    }
    else if (name == "map" || name == "write")
    {
        span.m_bytes = event.at("args").at("bytes").get<double>();
        run.m_moving[name == "map" ? "mapping" : "writing"].push_back(span);
    }
}

SRun Run_Read(const std::filesystem::path& trace)
{
    std::ifstream stream = InputFile_Open(trace, "trace");
    SRun run;
    std::string wrong;
    try
    {
        const CJson json = CJson::parse(stream);
        for (const CJson& event : json.at("traceEvents"))
        {
            Event_Add(event, run);
        }
        wrong = run.m_moving["mapping"].empty() ? "no band was mapped in it" : "";
    }
    catch (const CJson::exception& error)
    {
        wrong = error.what();
    }
    catch (const std::runtime_error& error)
    {
        wrong = error.what();
    }
    if (!wrong.empty())
    {
        throw CInputError(Path_Shown(trace) + ": is no trace of boardmap convert: " + wrong);
    }
    return run;
}

// What of the span lies in each step, by `add(step, microseconds)`.
template<class TAdd>
void Steps_Walk(const SSpan& span, double stepTime, TAdd add)
{
    const auto first = static_cast<int>(span.m_begin / stepTime);
    for (int step = std::min(first, stepCount - 1); step < stepCount; ++step)
    {
        const double begin = std::max(span.m_begin, step * stepTime);
        const double end = step == stepCount - 1 ? span.m_end : std::min(span.m_end, (step + 1) * stepTime);
        if (end > begin)
        {
            add(step, end - begin);
        }
        if (span.m_end <= (step + 1) * stepTime)
        {
            return;
        }
    }
}

// A plot of series, each with a value for every step.
CJson Plot_Make(const std::string& name, const std::string& unit, double stepTime,
                const std::vector<std::pair<std::string, std::vector<double>>>& series)
{
    constexpr double digits = 1000; // places behind the point
    CJson labels = CJson::array();
    for (const auto& [label, values] : series)
    {
        labels.push_back(label);
    }
    CJson rows = CJson::array();
    for (int step = 0; step < stepCount; ++step)
    {
        CJson row = CJson::array({std::round(step * stepTime) / microsecondsPerSecond});
        for (const auto& [label, values] : series)
        {
            row.push_back(std::round(values[static_cast<std::size_t>(step)] * digits) / digits);
        }
        rows.push_back(std::move(row));
    }
    return {{"Name", name}, {"Unit", unit}, {"Step", true}, {"Labels", std::move(labels)}, {"Rows", std::move(rows)}};
}

// Bytes of spans by the time that they took, in each step.
std::vector<double> Throughput_Of(const std::vector<SSpan>& spans, double stepTime)
{
    std::vector<double> values(stepCount);
    for (const SSpan& span : spans)
    {
        const double length = std::max(span.m_end - span.m_begin, 1e-3);
        Steps_Walk(span, stepTime,
                   [&](int step, double time)
                   { values[static_cast<std::size_t>(step)] += span.m_bytes * time / length / stepTime; });
    }
    return values; // bytes per microsecond, which are megabytes per second
}

// The mean of a counter in each step.
std::vector<double> Depth_Of(std::vector<SCounterValue> changes, double end, double stepTime)
{
    std::ranges::stable_sort(changes, {}, &SCounterValue::m_time);
    std::vector<double> values(stepCount);
    for (std::size_t i = 0; i < changes.size(); ++i)
    {
        const double until = i + 1 < changes.size() ? changes[i + 1].m_time : end;
        Steps_Walk({changes[i].m_time, until}, stepTime,
                   [&](int step, double time)
                   { values[static_cast<std::size_t>(step)] += changes[i].m_bands * time / stepTime; });
    }
    return values;
}

std::vector<double> Share_Of(const std::vector<SSpan>& spans, double stepTime)
{
    constexpr double percent = 100;
    std::vector<double> values(stepCount);
    for (const SSpan& span : spans)
    {
        Steps_Walk(span, stepTime,
                   [&](int step, double time) { values[static_cast<std::size_t>(step)] += percent * time / stepTime; });
    }
    return values;
}

} // namespace

CJson TracePlots_Make(const std::filesystem::path& trace)
{
    const SRun run = Run_Read(trace);
    const double stepTime = std::max(run.m_end, 1.0) / stepCount;
    std::vector<std::pair<std::string, std::vector<double>>> throughput;
    for (const auto& [label, spans] : run.m_moving)
    {
        throughput.emplace_back(label, Throughput_Of(spans, stepTime));
    }
    std::vector<std::pair<std::string, std::vector<double>>> depths;
    for (const auto& [label, changes] : run.m_counters)
    {
        depths.emplace_back(label, Depth_Of(changes, run.m_end, stepTime));
    }
    std::vector<std::pair<std::string, std::vector<double>>> stalls;
    for (const auto& [thread, spans] : run.m_stalls)
    {
        const auto name = run.m_threads.find(thread);
        stalls.emplace_back(name == run.m_threads.end() ? "thread " + std::to_string(thread) : name->second,
                            Share_Of(spans, stepTime));
    }
    CJson plots = CJson::array({Plot_Make("Throughput", "MB/s", stepTime, throughput)});
    if (!depths.empty())
    {
        plots.push_back(Plot_Make("Bands in the queues", "bands", stepTime, depths));
    }
    if (!stalls.empty())
    {
        plots.push_back(Plot_Make("Stalls: time that a thread waits", "%", stepTime, stalls));
    }
    return plots;
}
