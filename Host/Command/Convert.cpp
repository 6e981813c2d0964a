// The convert command: job, conversion, writer, and what the user is told.
#include "Host/Command/Convert.h"

#include "Host/Colour.h"
#include "Host/Command/Answer.h"
#include "Host/Command/BoardOutput.h"
#include "Host/Command/BoardTarget.h"
#include "Host/Command/Command.h"
#include "Host/Command/Conversion.h"
#include "Host/Command/RunResult.h"
#include "Host/HostError.h"
#include "Host/Interrupt.h"
#include "Host/Job/JobPage.h"
#include "Host/PathText.h"
#include "Host/Trace.h"
#include "Platform/Helper/ProcessHelper.h"
#include "Platform/Log/CustomBoostLog.h"
#include "Platform/ThreadStatus/ThreadStatus.h"

#include <chrono>
#include <cstdint>
#include <iostream>
#include <memory>
#include <ostream>
#include <system_error>

namespace
{

using Seconds = std::chrono::duration<double>;

constexpr unsigned lookMs = 50; // how often the main thread looks after a running job

SBoardTarget Target_Get(const SConvertOptions& options)
{
    return {options.m_output, options.m_format, options.m_compression, options.m_bForce};
}

// What the options leave open, and what they must not combine.
SConvertOptions Options_Complete(SConvertOptions options)
{
    if (options.m_output.empty())
    {
        options.m_output = options.m_job.stem();
        options.m_output += options.m_format == EBoardFormat::Tiff ? ".boards.tif" : ".boards.raw";
    }
    BoardTarget_Check(Target_Get(options));
    return options;
}

// Nothing that the job reads may be written to.
void Written_Check(const std::filesystem::path& written, const SJob& job, const std::filesystem::path& jobFile)
{
    const std::string hint = "; name another file";
    if (IsSameFile(written, jobFile))
    {
        throw CInputError(Path_Shown(written) + ": this is the job file itself" + hint);
    }
    for (const SJobUnit& unit : job.m_units)
    {
        bool bRead = !unit.m_stripeColor.m_path.empty() && IsSameFile(written, unit.m_stripeColor.m_path);
        for (int page = 0; page < job.m_pages.m_count && !bRead; ++page)
        {
            const std::filesystem::path separation = Job_SeparationPath(job, unit, page);
            bRead = !separation.empty() && IsSameFile(written, separation);
        }
        if (bRead)
        {
            throw CInputError(Path_Shown(written) + ": the job reads this file" + hint);
        }
    }
}

void Log_Open(const SConvertOptions& options, const SJob& job)
{
    Written_Check(options.m_log, job, options.m_job);
    if (IsSameFile(options.m_log, options.m_output))
    {
        throw CInputError(Path_Shown(options.m_log) + ": the board data goes to this file; name another one for --log");
    }
    if (!CCustomBoostLog::File_Open(Path_Text(options.m_log), ESeverityLevel::Debug))
    {
        throw CInputError(
            Path_Shown(options.m_log) +
            ": cannot be opened for writing; --log needs a file in a folder that is there, or a pipe that "
            "somebody reads");
    }
}

// Null without --trace.
std::unique_ptr<CTrace> Trace_Open(const SConvertOptions& options, const SJob& job)
{
    if (options.m_trace.empty())
    {
        return nullptr;
    }
    if (IsStandardOutput(options.m_trace))
    {
        throw CInputError("--trace -: a trace does not go to standard output; name a file");
    }
    Written_Check(options.m_trace, job, options.m_job);
    for (const std::filesystem::path& other : {options.m_output, options.m_log})
    {
        if (!other.empty() && IsSameFile(options.m_trace, other))
        {
            throw CInputError(Path_Shown(options.m_trace) +
                              ": board data or log records go to this file; name another one for --trace");
        }
    }
    return std::make_unique<CTrace>(options.m_trace, ProgramName_Get() + " convert " + Path_Text(options.m_job));
}

// The part of the job that is wanted, if it is not the whole.
SBoardInfo Info_Make(const SConvertOptions& options, const CJobPage& page)
{
    SBoardInfo info = Page_BoardInfo(page, ProgramName_Get());
    const std::int64_t count = page.StepCount();
    if (options.m_bands.m_first >= count)
    {
        throw CInputError("--bands: the job has " + std::to_string(count) + (count == 1 ? " band" : " bands") +
                          ", from 0 on");
    }
    const std::int64_t last = options.m_bands.Last_Get(count);
    if (options.m_bands.m_first > 0 || last < count - 1)
    {
        info.m_partFirst = options.m_bands.m_first;
        info.m_partLast = last;
    }
    return info;
}

// Throws if a record is lost to the log.
void Log_Check(const SConvertOptions& options)
{
    if (const int error = CCustomBoostLog::File_Error(); !options.m_log.empty() && error != 0)
    {
        throw CRunError(Path_Shown(options.m_log) + ": cannot be written: " + std::generic_category().message(error));
    }
}

// Has all the board bands written, and completes the output. False if the user interrupted it.
bool Bands_Write(CConversion& conversion, CBoardWriter& writer, CProgress& progress, const SConvertOptions& options,
                 CTrace* pTrace, SRunResult& result)
{
    const auto begin = std::chrono::steady_clock::now();
    CBoardOutput output(*conversion.Output(), writer);
    output.Trace_Set(conversion.WriterTrack_Get(), conversion.OutputQueue_Get());
    if (!output.Start("CBoardOutput"))
    {
        throw CRunError("the thread that writes the board data could not be started");
    }
    while (!output.WaitExit(lookMs))
    {
        if (CInterrupt::IsRequested())
        {
            return false;
        }
        conversion.Error_Check();
        const SBoardCount count = output.Count_Get();
        if (CProcessHelper::StatusRequest_Take())
        {
            progress.Clear();
            std::cerr << "boardmap: " << count.bands << " bands, " << count.lines << " lines, " << count.bytes
                      << " bytes written; its thread " << (output.WaitExit(0) ? "ended" : "runs") << '\n'
                      << conversion.Status_Text(count.bands) << std::flush;
        }
        if (pTrace != nullptr)
        {
            pTrace->Write();
        }
        progress.Update(count.bands, count.bytes);
    }
    if (CInterrupt::IsRequested()) // while the last band was on its way, or had nobody to take it
    {
        return false;
    }
    output.Error_Check();
    conversion.Error_Check();
    Log_Check(options);
    writer.Finish();
    const SBoardCount count = output.Count_Get();
    result.m_bands = count.bands;
    result.m_lines = count.lines;
    result.m_bytes = count.bytes;
    result.m_seconds = Seconds(std::chrono::steady_clock::now() - begin).count();
    return true;
}

// What the run left behind in the stage and in the process.
void Result_Complete(SRunResult& result, const SConvertOptions& options, const CConversion& conversion)
{
    const SConversionStall stall = conversion.Stall_Get();
    result.m_output = IsStandardOutput(options.m_output) ? "standard output" : Path_Text(options.m_output);
    result.m_format = options.m_format == EBoardFormat::Raw ? "raw" : "tiff";
    result.m_mappingSeconds = Seconds(CThreadStatusMonitor::BusyTime_Get(ECustomThreadId::UnitData2BoardData)).count();
    result.m_inputStalls = stall.m_input.m_count;
    result.m_inputStallSeconds = Seconds(stall.m_input.m_duration).count();
    result.m_outputStalls = stall.m_output.m_count;
    result.m_outputStallSeconds = Seconds(stall.m_output.m_duration).count();
    result.m_peakMemoryBytes = CProcessHelper::PeakMemoryBytes();
}

bool Job_Convert(const SConvertOptions& options)
{
    const CJobPage page(options.m_job);
    const SBoardInfo info = Info_Make(options, page);
    if (!IsStandardOutput(options.m_output))
    {
        Written_Check(options.m_output, page.Job(), options.m_job);
    }
    if (!options.m_log.empty())
    {
        Log_Open(options, page.Job());
    }
    SRunResult result;
    result.m_warnings = page.Warnings_Get();
    for (const SMistake& warning : result.m_warnings)
    {
        std::cerr << Colour_OfErrors(Text_Shown(Mistake_Text(warning)), EColour::Warning) << '\n' << std::flush;
    }
    const std::unique_ptr<CTrace> trace = Trace_Open(options, page.Job());
    CConversion conversion(page, options.m_bands, trace.get());
    const std::unique_ptr<CBoardWriter> writer = BoardTarget_Open(Target_Get(options), info);
    {
        CProgress progress(options.m_progress, info.LastStep() - info.FirstStep() + 1);
        conversion.Start();
        if (!Bands_Write(conversion, *writer, progress, options, trace.get(), result))
        {
            return false;
        }
        progress.Finish(result.m_bands, result.m_bytes);
    }
    if (trace != nullptr)
    {
        trace->Finish();
    }
    Result_Complete(result, options, conversion);
    result.m_pages = info.m_pageCount;
    result.m_firstStep = info.FirstStep();
    result.m_lastStep = info.LastStep();
    result.m_bPart = info.IsPart();
    const std::string summary = options.m_bJson ? RunResult_Json(result) : RunResult_Text(result);
    if (IsStandardOutput(options.m_output))
    {
        std::cerr << summary << std::flush;
    }
    else
    {
        Answer_Print(summary);
    }
    return true;
}

} // namespace

bool Convert_Run(const SConvertOptions& options)
{
    const CInterrupt interrupt(Exit_Interrupted, "interrupted; nothing was written\n"); // outlives what is wound down
    try
    {
        return Job_Convert(Options_Complete(options));
    }
    catch (const CInterruptedError&)
    {
        return false;
    }
}
