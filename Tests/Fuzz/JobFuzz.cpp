// Job files: any text. A job with mistakes is refused, each mistake in one line of plain text; one without any, if it
// is small, is converted, and verify must find every bit as the job asks for it.
#include "Host/Job/JobPlan.h"
#include "Tests/Fuzz/ConvertedJob.h"
#include "Tests/Fuzz/FuzzPages.h"
#include "Tests/Fuzz/FuzzTarget.h"

namespace
{

void Text_Check(const std::string& text)
{
    Fuzz_Expect(std::ranges::none_of(text, [](unsigned char c) { return c < ' ' || c == 0x7F; }),
                "a mistake is one line without control characters");
}

// What it takes to convert a job: not too much of anything.
bool Job_IsSmall(const CJobPage& page)
{
    constexpr std::int64_t mostBytes = 1 << 18;
    constexpr std::int64_t mostMemory = 1 << 24;
    const SJobPlan plan = Job_Plan(page);
    return plan.m_bytes <= mostBytes && plan.m_memory.Bytes() <= mostMemory && plan.m_bands <= 8 &&
           page.Job().m_lineGeneratorCount <= 4 && page.Job().m_dpOption.m_printerDataWidth <= 64;
}

void Job_Convert(CJobPage& page)
{
    const std::filesystem::path output = FuzzFolder_Get() / "job.boards.raw";
    const CJobPage checked(page.JobFile());
    try
    {
        Job_ConvertTo(page, *BoardWriter_Make(checked, output, EBoardFormat::Raw));
    }
    catch (const CInputError&)
    {
        return; // a stripe colour or a separation that is damaged behind its header
    }
    Fuzz_Expect(Output_Verify(checked, output).m_differenceCount == 0, "verify agrees with convert");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static const bool bPages = (FuzzPages_Write(FuzzFolder_Get().Path()), true);
    static_cast<void>(bPages);
    CMistakeList mistakes;
    CJobPage page(InputFile_Write("job.toml", bytes, size), mistakes);
    for (const SMistake& mistake : mistakes.All())
    {
        Text_Check(Mistake_Text(mistake));
    }
    Fuzz_Expect(page.HasPage() == !mistakes.HasErrors(), "a job without mistakes is a page");
    if (page.HasPage() && Job_IsSmall(page))
    {
        Job_Convert(page);
    }
    return 0;
}
