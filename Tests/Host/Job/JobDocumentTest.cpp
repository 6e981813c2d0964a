// The job files of the documentation, and the messages that it shows, are real.
#include "Tests/Host/Job/TestJob.h"
#include "Tests/Host/Output/TestFolder.h"

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

} // namespace

TEST(JobDocument, EveryExampleIsAJobThatRuns)
{
    const std::vector<std::string> jobs = Blocks_Of(Document_Read(), "toml");
    ASSERT_EQ(jobs.size(), 4U);
    const std::vector<SJobMap> maps = {
        {EMapClass::Map_5, 1, 1}, {EMapClass::Map_2, 1, 2}, {EMapClass::Map_5, 2, 2}, {EMapClass::Map_1, 1, 1}};
    for (std::size_t i = 0; i < jobs.size(); ++i)
    {
        EXPECT_EQ(JobError_Of(jobs[i]), "no error") << jobs[i];
        EXPECT_EQ(Job_Of(jobs[i]).m_map, maps[i]) << jobs[i];
    }
}

TEST(JobDocument, MessagesAreThoseThatTheFirstExampleGivesWhenItIsSpoiled)
{
    const std::string document = Document_Read();
    const std::string job = Blocks_Of(document, "toml").at(0);
    std::string messages = JobError_Of(Replaced(job, "PrinterDataWidth = 16", "PrinterDataWidth = 17")) + '\n' +
                           JobError_Of(Replaced(job, "DataMapStyle", "DataMapStil")) + '\n' +
                           JobError_Of(Replaced(job, "UnitId = 0", "UnitId = 16")) + '\n';
    const SJob checked = Job_Of(job);
    messages += Error_Of<CInputError>(
        [&] {
            Job_CheckSeparations(checked, std::vector<SSeparationInfo>(4, {"page.Cyan.tif", 100, 100, 2}));
        });
    EXPECT_EQ(Blocks_Of(document, "text").at(0), messages + '\n');
}

TEST(JobDocument, EveryKeyIsExplained)
{
    const std::string document = Document_Read();
    for (const char* pKey :
         {"Version", "Kind", "SkipBlank", "InputBands", "DataMapStyle", "DataPushStyle", "PrinterSupportBits",
          "PrinterDataWidth", "BitsPerPixel", "DotSizeMode", "AlignByteCountPerLine", "Bidirectional", "Nozzles",
          "UnitId", "Separation", "Direction", "Name"})
    {
        EXPECT_NE(document.find("\n| `" + std::string(pKey) + "` |"), std::string::npos) << pKey;
    }
}
