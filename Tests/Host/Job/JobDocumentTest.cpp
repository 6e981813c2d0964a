// The job files of the documentation, and the messages that it shows, are real.
#include "Host/Job/JobGeometry.h"
#include "Tests/Host/Job/TestJob.h"
#include "Tests/Support/TestFolder.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

std::string Document_Read()
{
    return File_Read(JOB_DOCUMENT);
}

// The text blocks of the document that are marked as this language.
std::vector<std::string> Blocks_Of(const std::string& document, const std::string& language)
{
    const std::string begin = "\n```" + language + "\n";
    const std::string end = "\n```\n";
    std::vector<std::string> blocks;
    for (std::size_t at = document.find(begin); at != std::string::npos; at = document.find(begin, at))
    {
        at += begin.size();
        blocks.push_back(document.substr(at, document.find(end, at) + 1 - at));
    }
    return blocks;
}

// What Job_CheckSeparations says to separations of this depth on a page of 100 x 100 pixels.
std::string Error_OfPage(const SJob& job, int bitsPerPixel)
{
    std::vector<SSeparationInfo> separations;
    for (const SJobUnit& unit : job.m_units)
    {
        if (unit.HasSeparation())
        {
            separations.push_back({unit.m_separation, 100, 100, bitsPerPixel});
        }
    }
    return Error_Of<CInputError>([&] { Job_CheckSeparations(job, separations); });
}

constexpr std::size_t stripeExample = 3; // among the jobs of the document

std::string Range_Text(std::int64_t begin, std::int64_t end)
{
    return std::to_string(begin) + " to " + std::to_string(end - 1);
}

} // namespace

TEST(JobDocument, EveryExampleIsAJobThatRuns)
{
    const std::vector<std::string> jobs = Blocks_Of(Document_Read(), "toml");
    ASSERT_EQ(jobs.size(), 8U);
    const std::vector<SJobMap> maps = {{EMapClass::Map_5, 1, 1}, {EMapClass::Map_5, 1, 1}, {EMapClass::Map_5, 1, 1},
                                       {EMapClass::Map_5, 1, 1}, {EMapClass::Map_2, 1, 2}, {EMapClass::Map_5, 2, 2},
                                       {EMapClass::Map_1, 1, 1}, {EMapClass::Map_8, 1, 1}};
    for (std::size_t i = 0; i < jobs.size(); ++i)
    {
        EXPECT_EQ(JobError_Of(jobs[i]), "no error") << jobs[i];
        EXPECT_EQ(Job_Of(jobs[i]).m_map, maps[i]) << jobs[i];
    }
}

TEST(JobDocument, ExamplesFitAPage)
{
    for (const std::string& text : Blocks_Of(Document_Read(), "toml"))
    {
        const SJob job = Job_Of(text);
        EXPECT_EQ(Error_OfPage(job, job.m_bitsPerPixel), "no error") << text;
    }
}

TEST(JobDocument, MessagesAreThoseThatTheExamplesGiveWhenTheyAreSpoiled)
{
    const std::string document = Document_Read();
    const std::string job = Blocks_Of(document, "toml").at(0);
    const std::string stripes =
        Replaced(Blocks_Of(document, "toml").at(stripeExample), "UnitPitch = 8", "UnitPitch = 8\nStripeLength = 11");
    const std::string messages = JobError_Of(Replaced(job, "PrinterDataWidth = 16", "PrinterDataWidth = 17")) + '\n' +
                                 JobError_Of(Replaced(job, "DataMapStyle", "DataMapStil")) + '\n' +
                                 JobError_Of(Replaced(job, "UnitId = 0", "UnitId = 16")) + '\n' +
                                 Error_OfPage(Job_Of(job), 2) + '\n' + Error_OfPage(Job_Of(stripes), 1);
    EXPECT_EQ(Blocks_Of(document, "text").at(0), messages + '\n');
}

TEST(JobDocument, PositionsOfTheStripeExampleAreReal)
{
    const std::string document = Document_Read();
    const SJob job = Job_Of(Blocks_Of(document, "toml").at(stripeExample));
    constexpr int columns = 100;
    for (const bool bLeftToRight : {true, false})
    {
        const auto image = [&](std::size_t unit)
        {
            const int begin = Job_ImagePosition(job, job.m_units.at(unit), bLeftToRight);
            return Range_Text(begin, begin + columns);
        };
        const auto stripes = [&](std::size_t unit)
        {
            const int length = job.m_inkStripe.m_stripeLength;
            const auto left = Job_Stripe(job, job.m_units.at(unit), columns, bLeftToRight, bLeftToRight, length);
            const auto right = Job_Stripe(job, job.m_units.at(unit), columns, bLeftToRight, !bLeftToRight, length);
            return Range_Text(left->m_begin, left->m_end) + " and " + Range_Text(right->m_begin, right->m_end);
        };
        const std::string row = std::string("\n| ") + (bLeftToRight ? "left to right" : "right to left") + " | " +
                                std::to_string(Job_PassPositions(job, columns, bLeftToRight)) + " | " + image(0) +
                                " | " + image(1) + " | " + stripes(2) + " | " + stripes(3) + " |\n";
        EXPECT_NE(document.find(row), std::string::npos) << row;
    }
}

TEST(JobDocument, EveryKeyIsExplained)
{
    const std::string document = Document_Read();
    for (const char* pKey : {"Version",
                             "Kind",
                             "SkipBlank",
                             "InputBands",
                             "DataMapStyle",
                             "DataPushStyle",
                             "PrinterSupportBits",
                             "PrinterDataWidth",
                             "LineGeneratorCount_Of_DataMap",
                             "BitsPerPixel",
                             "DotSizeMode",
                             "AlignByteCountPerLine",
                             "Bidirectional",
                             "MaskCount_1",
                             "MaskCount_2",
                             "LeftStripeWidth",
                             "RightStripeWidth",
                             "UnitPitch",
                             "UnitPositionCount",
                             "StripeLength",
                             "Nozzles",
                             "UnitId",
                             "Separation",
                             "Separations",
                             "First",
                             "Last",
                             "MissingIsBlank",
                             "Direction",
                             "Name",
                             "UnitPosition",
                             "Horizon_1",
                             "Horizon_2",
                             "StripeColor"})
    {
        EXPECT_NE(document.find("\n| `" + std::string(pKey) + "` |"), std::string::npos) << pKey;
    }
}
