// The command explain: why a nozzle fires, or does not.
#include "Host/Command/ExplainCommand.h"

#include "Host/Board/BoardRecord.h"
#include "Host/Command/Answer.h"
#include "Host/Command/Explainer.h"
#include "Host/HostError.h"
#include "Host/InputFile.h"
#include "Host/PathText.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <limits>
#include <string_view>

namespace
{

// Whether the file begins as one of the two board formats does. What is no plain file is taken for a job, which says
// what is wrong with it: a look at it would take from it. Throws CInputError if it cannot be read.
bool IsOutput(const std::filesystem::path& file)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
    {
        return false;
    }
    std::array<char, 8> begin = {};
    std::ifstream stream = InputFile_Open(file, "job or a board file");
    errno = 0;
    stream.read(begin.data(), begin.size());
    if (stream.bad())
    {
        throw CInputError(
            {SMistake{false, Path_Text(file), {0, 0}, "file", "cannot be read: " + SystemError_Text(errno), ""}});
    }
    const std::string_view text(begin.data(), static_cast<std::size_t>(stream.gcount()));
    constexpr std::array<std::string_view, 4> tiffs = {std::string_view("II*\0", 4), std::string_view("MM\0*", 4),
                                                       std::string_view("II+\0", 4), std::string_view("MM\0+", 4)};
    const bool bTiff = std::ranges::any_of(tiffs, [&](std::string_view tiff) { return text.starts_with(tiff); });
    return bTiff || text == g_streamMagic;
}

// The job and the output among the files, in either order; one of them may be missing.
struct SExplainFiles
{
    std::filesystem::path m_job;
    std::filesystem::path m_output;
};

SExplainFiles Files_Get(const CArguments& arguments)
{
    SExplainFiles files;
    for (const std::string& name : arguments.Texts_Get("FILE"))
    {
        const std::filesystem::path path = Path_FromText(name);
        std::filesystem::path& place = IsOutput(path) ? files.m_output : files.m_job;
        if (!place.empty())
        {
            throw CInputError(name + " is one " + (&place == &files.m_job ? "job" : "output") +
                              " too many; explain takes a job, an output, or one of each");
        }
        place = path;
    }
    return files;
}

constexpr std::array<std::string_view, 4> nozzleWords = {"unit", "nozzle", "position", "band"};
constexpr std::array<std::string_view, 4> bitWords = {"band", "line", "byte", "bit"};
constexpr std::array<std::string_view, 3> inkWords = {"row", "column", "ink"};
constexpr std::array<std::string_view, 3> unitWords = {"row", "column", "unit"};

// Whether exactly these of the question's options were given.
template<class TWords>
bool IsQuestion(const CArguments& arguments, const TWords& words)
{
    for (const std::string_view word :
         {"unit", "nozzle", "position", "band", "line", "byte", "bit", "row", "column", "ink"})
    {
        if (arguments.Has(std::string(word)) != (std::ranges::find(words, word) != words.end()))
        {
            return false;
        }
    }
    return true;
}

SExplanation Answer_Make(CExplainer& explainer, const CArguments& arguments)
{
    const auto Number = [&](const char* pName) { return static_cast<int>(arguments.Number_Get(pName).value()); };
    if (IsQuestion(arguments, nozzleWords))
    {
        return explainer.Nozzle_Explain(Number("unit"), Number("nozzle"), Number("position"), Number("band"));
    }
    if (IsQuestion(arguments, bitWords))
    {
        return explainer.Bit_Explain(Number("band"), Number("line"), Number("byte"), Number("bit"));
    }
    const int unit = arguments.Has("unit") ? Number("unit") : explainer.Unit_OfInk(arguments.Text_Get("ink"));
    const int page = arguments.Has("page") ? Number("page") : 0;
    return explainer.Pixel_Explain(unit, Number("row"), Number("column"), page);
}

int Explain_Run(const CArguments& arguments)
{
    const bool bPixel = IsQuestion(arguments, inkWords) || IsQuestion(arguments, unitWords);
    const bool bBand = IsQuestion(arguments, nozzleWords) || IsQuestion(arguments, bitWords);
    if (!bPixel && (!bBand || arguments.Has("page")))
    {
        throw CInputError("explain needs one of --unit --nozzle --position --band, --row --column --ink (or --unit), "
                          "and --band --line --byte --bit, all of its options and no others; --page goes with --row");
    }
    const SExplainFiles files = Files_Get(arguments);
    CExplainer explainer(files.m_job, files.m_output);
    const SExplanation answer = Answer_Make(explainer, arguments);
    const SBoardInfo& info = explainer.Model().Info();
    const std::string text =
        arguments.Flag_Get("json") ? Explanation_Json(answer, info) : Explanation_Text(answer, info);
    Answer_Print(text);
    return answer.IsDifferent() ? Exit_Failed : Exit_Done;
}

SCommandOption Option_Number(const std::string& name, const std::string& help)
{
    return {.m_kind = EOptionKind::Number,
            .m_names = "--" + name,
            .m_value = "N",
            .m_help = help,
            .m_most = std::numeric_limits<int>::max()};
}

} // namespace

const SCommand& Command_Explain()
{
    static const SCommand command = {
        .m_name = "explain",
        .m_summary = "Say why a nozzle fires, or does not: from the page to the bit and back",
        .m_text = "A job says what the output must be, an output what it is; both together are held against each\n"
                  "other. Asked for a nozzle at a scan position, for a pixel of the page, or for a bit of the output.\n"
                  "All numbers count from 0. Docs/explain.md has the words of the answer.",
        .m_options = {{.m_kind = EOptionKind::File,
                       .m_names = "FILE",
                       .m_help = "A job, an output of it, or both, in any order",
                       .m_bRequired = true,
                       .m_bMany = true},
                      Option_Number("band", "The band: its running number in the output"),
                      Option_Number("unit", "The unit's id"),
                      Option_Number("nozzle", "The nozzle of the unit"),
                      Option_Number("position", "The scan position of the band"),
                      Option_Number("page", "The page of the job that --row is on. Default: 0, the first"),
                      Option_Number("row", "The page's row"),
                      Option_Number("column", "The page's column"),
                      {.m_kind = EOptionKind::Text,
                       .m_names = "--ink",
                       .m_value = "NAME",
                       .m_help = "The unit by its name or its separation's"},
                      Option_Number("line", "The line of the band"),
                      Option_Number("byte", "The byte of the line"),
                      Option_Number("bit", "The bit of the byte; 0 is the most significant"),
                      Option_Json()},
        .m_examples = {{"boardmap explain page.toml --unit 3 --nozzle 37 --position 1200 --band 5",
                        "what the nozzle prints there, and the bit that says so"},
                       {"boardmap explain page.boards.tif --row 2037 --column 1136 --ink Cyan",
                        "who prints the pixel, when, and whether the output has it"},
                       {"boardmap explain page.toml page.boards.tif --band 5 --line 1200 --byte 75 --bit 1",
                        "what the bit is for, and whether it is right"}},
        .m_exitText = "failed while running, or the output is not what the job makes",
        .m_pRun = &Explain_Run,
    };
    return command;
}
