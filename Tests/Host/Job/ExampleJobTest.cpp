// The example jobs in the repository: each is one that runs on the demonstration page.
#include "Host/Job/Job.h"

#include "Host/Job/JobCheck.h"
#include "Host/Job/JobGeometry.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <optional>

namespace
{

SJob Example_Load(const std::string& name)
{
    return Job_Load(std::filesystem::path(JOB_FOLDER) / name);
}

} // namespace

TEST(ExampleJob, EveryJobFitsTheDemonstrationPage)
{
    const std::map<std::string, int> separations = {{"page.Cyan.tif", 1},
                                                    {"page.Magenta.tif", 1},
                                                    {"page.Yellow.tif", 1},
                                                    {"page.Black.tif", 1},
                                                    {"page.Grey.tif", 2}};
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(JOB_FOLDER))
    {
        SCOPED_TRACE(entry.path().filename());
        ASSERT_EQ(entry.path().extension(), ".toml");
        const SJob job = Job_Load(entry.path());
        std::vector<SUnitSeparation> infos;
        for (const SJobUnit& unit : job.m_units)
        {
            if (unit.HasSeparation())
            {
                EXPECT_EQ(Job_SeparationPath(job, unit, 0).parent_path(), entry.path().parent_path());
                infos.push_back({&unit, 0, {unit.m_separation, 4961, 7016, separations.at(unit.m_separation)}});
            }
        }
        CMistakeList mistakes;
        Job_CheckSeparations(job, infos, mistakes);
        EXPECT_TRUE(mistakes.All().empty());
        ++count;
    }
    EXPECT_EQ(count, 10);
}

TEST(ExampleJob, ThereIsOneForEveryMap)
{
    EXPECT_EQ(Example_Load("style-1.toml").m_map.m_class, EMapClass::Map_1);
    EXPECT_EQ(Example_Load("style-2.toml").m_map.m_class, EMapClass::Map_2);
    EXPECT_EQ(Example_Load("style-03.toml").m_map.m_class, EMapClass::Map_03);
    EXPECT_EQ(Example_Load("style-03_01.toml").m_map.m_class, EMapClass::Map_03_01);
    EXPECT_EQ(Example_Load("style-5.toml").m_map.m_class, EMapClass::Map_5);
    EXPECT_EQ(Example_Load("style-6.toml").m_map.m_class, EMapClass::Map_6);
    EXPECT_EQ(Example_Load("style-7.toml").m_map.m_class, EMapClass::Map_7);
    EXPECT_EQ(Example_Load("style-8.toml").m_map.m_class, EMapClass::Map_8);
}

TEST(ExampleJob, EveryStageHasOne)
{
    EXPECT_EQ(Example_Load("style-1.toml").m_stageKind, EStageKind::Base);
    EXPECT_EQ(Example_Load("style-5.toml").m_stageKind, EStageKind::OneFIFO);
    EXPECT_EQ(Example_Load("demo-grey.toml").m_stageKind, EStageKind::InkStripe);
}

TEST(ExampleJob, FourColoursRunOnACarriageOfEightWithStripesInBothDirections)
{
    const SJob job = Example_Load("demo-cmyk.toml");
    EXPECT_EQ(job.m_stageKind, EStageKind::InkStripe);
    EXPECT_TRUE(job.m_bBidirectional);
    ASSERT_EQ(job.m_units.size(), 8U);
    for (std::size_t i = 0; i < job.m_units.size(); ++i)
    {
        EXPECT_EQ(job.m_units[i].m_unitId, static_cast<int>(i));
        EXPECT_EQ(Job_HasStripes(job, job.m_units[i]), i >= 4);
    }
    EXPECT_GT(Job_MaxOffset(job, true), 0);
    EXPECT_NE(Job_MaxOffset(job, true), Job_MaxOffset(job, false));
    // Every unit's stripes have a place of their own inside the zones.
    EXPECT_GE(job.m_inkStripe.m_leftStripeWidth, 8 * job.m_inkStripe.m_unitPitch);
    EXPECT_GE(job.m_inkStripe.m_rightStripeWidth, 8 * job.m_inkStripe.m_unitPitch);
    EXPECT_LE(job.m_inkStripe.m_stripeLength, job.m_inkStripe.m_unitPitch);
}
