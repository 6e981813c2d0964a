// The command init: opens the separations, has the job drafted, checks it as any job is checked, and writes it.
#include "Host/Command/InitCommand.h"

#include "Host/Colour.h"
#include "Host/HostError.h"
#include "Host/Input/SeparationReader.h"
#include "Host/Job/JobCheck.h"
#include "Host/Job/JobDraft.h"
#include "Host/Job/JobNames.h"
#include "Host/Job/JobReader.h"
#include "Host/Output/ByteSink.h"
#include "Host/PageName.h"
#include "Host/PathText.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <numeric>
#include <optional>
#include <system_error>

namespace fs = std::filesystem;

namespace
{

constexpr const char* standardOutput = "-";

SMistake File_Mistake(const std::string& file, const char* pRule, std::string what, std::string fix)
{
    return {false, file, {0, 0}, pRule, std::move(what), std::move(fix)};
}

// The header of a separation; nothing, with a mistake, if it is none.
std::optional<SSeparationInfo> Info_Get(const std::string& file, CMistakeList& mistakes)
{
    try
    {
        return SeparationInfo_Get(file);
    }
    catch (const CInputError& error)
    {
        const std::string text = error.what();
        mistakes.Add(
            File_Mistake(file, "separation", text.starts_with(file + ": ") ? text.substr(file.size() + 2) : text, ""));
        return std::nullopt;
    }
}

std::string Size_Text(const SSeparationInfo& info)
{
    return std::to_string(info.width) + " x " + std::to_string(info.height) + " pixels";
}

// What one page cannot have together.
void Infos_Check(const std::vector<SSeparationInfo>& infos, CMistakeList& mistakes)
{
    const SSeparationInfo& first = infos.front();
    for (const SSeparationInfo& info : infos)
    {
        if (info.bitsPerPixel != first.bitsPerPixel)
        {
            mistakes.Add(File_Mistake(info.path, "separation-depth",
                                      std::to_string(info.bitsPerPixel) + " bits per pixel, but " +
                                          Text_Printable(first.path) + " has " + std::to_string(first.bitsPerPixel),
                                      "all separations of a job have one depth"));
        }
        if (info.width != first.width || info.height != first.height)
        {
            mistakes.Add(
                File_Mistake(info.path, "separation-size",
                             Size_Text(info) + ", but " + Text_Printable(first.path) + " has " + Size_Text(first),
                             "all separations of a page have one size"));
        }
    }
}

// The file as the job in `jobFile` names it, with slashes on every system.
std::string Name_InJob(const std::string& file, const fs::path& jobFile)
{
    const fs::path path = Path_FromText(file);
    if (path.is_absolute())
    {
        return file;
    }
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(fs::absolute(path).parent_path(), error);
    const fs::path from = fs::weakly_canonical(fs::absolute(jobFile).parent_path(), error);
    const fs::path relative = (folder / path.filename()).lexically_relative(from);
    const std::u8string text = (relative.empty() ? fs::absolute(path) : relative).generic_u8string();
    return {text.begin(), text.end()};
}

// One entry for each ink; of several pages it has the pattern of their names.
std::vector<SDraftFile> Files_Make(const std::vector<SSeparationInfo>& infos, const fs::path& jobFile,
                                   std::optional<SDraftPages>& draftPages)
{
    std::vector<std::string> jobNames;
    std::ranges::transform(infos, std::back_inserter(jobNames),
                           [&](const SSeparationInfo& info) { return Name_InJob(info.path, jobFile); });
    std::vector<std::size_t> places(infos.size()); // of the files that stand for their inks
    std::iota(places.begin(), places.end(), std::size_t{0});
    if (const std::optional<SPageNames> pages = Pages_FromNames(jobNames))
    {
        draftPages = pages->m_pages;
        jobNames = pages->m_patterns;
        places = pages->m_files;
    }
    // The names of one page: what differs between them is their inks'.
    std::vector<std::string> names;
    std::ranges::transform(jobNames, std::back_inserter(names),
                           [&](const std::string& name)
                           {
                               const std::string page = draftPages ? PageName_Make(name, draftPages->m_first) : name;
                               return Path_Text(Path_FromText(page).filename());
                           });
    const std::vector<std::string> inks = Inks_FromNames(names);
    std::vector<SDraftFile> files;
    for (std::size_t i = 0; i < places.size(); ++i)
    {
        files.push_back({jobNames[i], inks[i], infos[places[i]]});
    }
    std::ranges::stable_sort(files, {}, [](const SDraftFile& file) { return Ink_Order(file.m_ink); });
    return files;
}

// Checks the draft as the job that it will be. Its lines are not on the disk yet, so that mistakes have no place.
void Draft_Check(const fs::path& file, const std::string& text, const std::vector<SDraftFile>& files)
{
    CMistakeList found;
    SJob job = JobText_Parse(file, text, found);
    Job_Check(job, found);
    std::vector<SUnitSeparation> separations;
    for (std::size_t i = 0; i < job.m_units.size() && i < files.size(); ++i)
    {
        separations.push_back({&job.m_units[i], 0, files[i].m_info});
    }
    Job_CheckSeparations(job, separations, found);
    CMistakeList mistakes;
    for (SMistake mistake : found.All())
    {
        mistake.m_place = {0, 0};
        mistakes.Add(mistake);
        if (mistake.m_bWarning)
        {
            std::cerr << Colour_OfErrors(Text_Shown(Mistake_Text(mistake)), EColour::Warning) << '\n' << std::flush;
        }
    }
    mistakes.Errors_Throw();
}

std::vector<SSeparationInfo> Infos_Get(const std::vector<std::string>& files)
{
    CMistakeList mistakes;
    std::vector<SSeparationInfo> infos;
    for (const std::string& file : files)
    {
        if (!Text_IsUtf8(file))
        {
            mistakes.Add({false, file, {0, 0}, "file", "the name is not UTF-8, as a job file is", "rename it"});
        }
        else if (std::optional<SSeparationInfo> info = Info_Get(file, mistakes))
        {
            infos.push_back(std::move(*info));
        }
    }
    if (!infos.empty())
    {
        Infos_Check(infos, mistakes);
    }
    mistakes.Errors_Throw();
    return infos;
}

// Nothing that is there is overwritten unasked, and never a separation.
void Output_Check(const fs::path& output, const std::vector<std::string>& files, bool bForce)
{
    std::error_code error;
    for (const std::string& file : files)
    {
        if (fs::equivalent(output, Path_FromText(file), error))
        {
            throw CInputError(Path_Shown(output) + ": this is a separation; name another file for the job");
        }
    }
    if (!bForce && fs::exists(fs::symlink_status(output, error)))
    {
        throw CInputError(Path_Shown(output) + ": is there already; --force replaces it, -o names another file");
    }
}

int Init_Run(const CArguments& arguments)
{
    const std::vector<std::string> names = arguments.Texts_Get("FILES");
    const std::string target = arguments.Has("output") ? arguments.Text_Get("output") : "job.toml";
    const bool bStandardOutput = target == standardOutput;
    const fs::path output = Path_FromText(bStandardOutput ? "job.toml" : target);
    if (!bStandardOutput)
    {
        Output_Check(output, names, arguments.Flag_Get("force"));
    }
    SDraftOptions options;
    const std::vector<SDraftFile> files = Files_Make(Infos_Get(names), output, options.m_pages);
    const std::size_t style = static_cast<std::size_t>(arguments.Number_Get("style").value_or(-1) + 1);
    options.m_map = style == 0 ? EMapClass::Map_5 : MapClasses()[style - 1].m_class;
    options.m_nozzles = static_cast<int>(arguments.Number_Get("nozzles").value_or(options.m_nozzles));
    options.m_bBidirectional = !arguments.Flag_Get("one-way");
    const std::string text = JobDraft_Make(options, files);
    Draft_Check(output, text, files);
    std::unique_ptr<CByteSink> sink;
    if (bStandardOutput)
    {
        sink = std::make_unique<CStandardOutput>();
    }
    else
    {
        sink = std::make_unique<COutputFile>(output, ESpecialFile::Refuse);
    }
    sink->Write(text.data(), text.size());
    sink->Finish();
    return Exit_Done;
}

std::vector<std::string> Style_Choices()
{
    std::vector<std::string> choices;
    for (const SMapClass& row : MapClasses())
    {
        choices.emplace_back(row.m_pName);
    }
    return choices;
}

} // namespace

const SCommand& Command_Init()
{
    constexpr int mostNozzles = 1 << 20;
    static const SCommand command = {
        .m_name = "init",
        .m_summary = "Write a job for separations that are there",
        .m_text = "The inks are taken from the names: page1(Cyan).tif, page.Cyan.tif, page(PANTONE 300 C).tif; cyan,\n"
                  "magenta, yellow and black come first. The job has a comment for every choice, and passes\n"
                  "boardmap check. Docs/check.md tells how to get separations from a PDF.",
        .m_options = {{.m_kind = EOptionKind::File,
                       .m_names = "FILES",
                       .m_help = "The separations of one page (TIFF)",
                       .m_bRequired = true,
                       .m_bMany = true},
                      {.m_kind = EOptionKind::File,
                       .m_names = "-o,--output",
                       .m_value = "FILE",
                       .m_help = "The job file; - is standard output. Default: job.toml, in the current folder"},
                      {.m_kind = EOptionKind::Choice,
                       .m_names = "--style",
                       .m_value = "STYLE",
                       .m_help = "The boards' layout, by its map style: 1, 2, 03, 03_01, 5, 6, 7 or 8. Default: 5",
                       .m_choices = Style_Choices()},
                      {.m_kind = EOptionKind::Number,
                       .m_names = "--nozzles",
                       .m_value = "N",
                       .m_help = "Nozzles of a head. Default: 400",
                       .m_least = 1,
                       .m_most = mostNozzles},
                      {.m_names = "--one-way", .m_help = "Print from left to right only. Default: in both directions"},
                      {.m_names = "--force", .m_help = "Replace a job file that is there"}},
        .m_examples = {{"boardmap init page*.tif -o page.toml", "a job for the separations of a page, or of several"},
                       {"boardmap init page*.tif --style 6 -o -", "for boards of style 6, on standard output"}},
        .m_pRun = &Init_Run,
    };
    return command;
}
