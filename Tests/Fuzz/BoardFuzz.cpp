// Board files: any bytes as an output of either format, through the reader that `info`, `verify` and `explain` share.
// What a reader refuses it says in one line; what it says of a file it says again when that is written and read; and
// verify holds anything against a job without harm.
#include "Tests/Fuzz/ConvertedJob.h"
#include "Tests/Fuzz/FuzzPages.h"
#include "Tests/Fuzz/FuzzTarget.h"

namespace
{

constexpr int mostBands = 64;   // that are read
constexpr int mostDamages = 16; // after which the reader goes on

// The page whose outputs are in the corpus.
const CJobPage& Page_Get()
{
    static const std::filesystem::path file = []
    {
        FuzzPages_Write(FuzzFolder_Get().Path());
        File_Write(FuzzFolder_Get() / "job.toml", File_Read(std::filesystem::path(FUZZ_FOLDER) / "Boards.toml"));
        return FuzzFolder_Get() / "job.toml";
    }();
    static const CJobPage page(file);
    return page;
}

void Message_Check(const std::exception& error)
{
    Fuzz_Expect(std::string(error.what()).find('\n') == std::string::npos, "a refusal is one line");
}

void Info_Check(const SBoardInfo& info)
{
    if (info.m_version == g_boardVersion)
    {
        Fuzz_Expect(BoardInfo_Parse(BoardInfo_Json(info), info.m_version) == info,
                    "what a file says of itself is kept");
    }
}

void Band_Check(const CBandData& band, const SBoardPass& pass, const SBoardInfo& info)
{
    Fuzz_Expect(band.m_dataSize == band.m_height * band.m_bytesPerLine, "a band has all its lines");
    if (info.m_version == g_boardVersion)
    {
        const SBandDescription said = BandHeader_Parse(BandHeader_Json(band, pass, info));
        Fuzz_Expect(said.m_pass == pass && said.m_info == info, "what a band says of itself is kept");
    }
}

void File_ReadAll(const std::filesystem::path& file)
{
    const auto reader = CBoardReader::Open(file);
    Info_Check(reader->BoardInfo());
    int damages = 0;
    for (int i = 0; i < mostBands; ++i)
    {
        try
        {
            CBandData band;
            SBoardPass pass;
            if (!reader->Band_Read(band, pass))
            {
                return;
            }
            Band_Check(band, pass, reader->BoardInfo());
        }
        catch (const CBoardDamageError& error)
        {
            Message_Check(error);
            if (++damages > mostDamages || !reader->Resume())
            {
                return;
            }
        }
    }
}

template<class Action>
void Refusals_Take(Action action)
{
    try
    {
        action();
    }
    catch (const CInputError& error)
    {
        Message_Check(error);
    }
    catch (const CRunError& error)
    {
        Message_Check(error); // no memory for a band
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const CJobPage& page = Page_Get();
    const std::filesystem::path file = InputFile_Write("boards", bytes, size);
    Refusals_Take([&] { File_ReadAll(file); });
    Refusals_Take([&] { Output_Verify(page, file); });
    return 0;
}
