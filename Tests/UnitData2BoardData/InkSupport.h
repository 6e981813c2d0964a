// What the tests of the ink-stripe stage and the one-FIFO stage share: the stages with their inside open, the way from
// the stripe model's job to a configuration, and a stage that the test drives by hand.
#pragma once

#include "Host/Model/StripeModel.h"
#include "Tests/Support/ConfigGuard.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/UnitData2BoardData/StageSupport.h"
#include "UnitData2BoardData/InkStripeParam_Run.h"
#include "UnitData2BoardData/UnitData2BoardData_AllUnit_2.h"
#include "UnitData2BoardData/UnitData2BoardData_S_AllUnit.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

// The way to what the stage keeps private.
struct SStageTestAccess
{
    using CStage = CUnitData2BoardData_S_AllUnit;

    static bool Init_Param(CStage& stage) { return stage.Init_Param(); }
    static bool AllocateOutputBuffer_ByUnit(CStage& stage) { return stage.AllocateOutputBuffer_ByUnit(); }
    static bool AllocateOutputBuffer_ByPixel(CStage& stage) { return stage.AllocateOutputBuffer_ByPixel(); }
    static std::vector<int> RestUnits(CStage& stage)
    {
        std::vector<int> ids = {-77}; // what was in the list before must not stay
        EXPECT_TRUE(stage.RestUnitIdList_Get(ids));
        return ids;
    }
    static bool InkStripeUnitData_Generate(CStage& stage, CBandData*& band, int unitId)
    {
        return stage.InkStripeUnitData_Generate(band, unitId);
    }
    static bool Left_ByUnit(CStage& stage, CBandData& band) { return stage.AddInkStripe_Left_ByUnit(band); }
    static bool Right_ByUnit(CStage& stage, CBandData& band) { return stage.AddInkStripe_Right_ByUnit(band); }
    static bool Left_ByPixel(CStage& stage, CBandData& band) { return stage.AddInkStripe_Left_ByPixel(band); }
    static bool Right_ByPixel(CStage& stage, CBandData& band) { return stage.AddInkStripe_Right_ByPixel(band); }
    static bool MapBandData_Buffer(CStage& stage, int unitIndex, const unsigned char* src, int srcBitOffset,
                                   int bitCount, unsigned char* dst, int dstByteCount)
    {
        return stage.MapBandData_Buffer(unitIndex, src, srcBitOffset, bitCount, dst, dstByteCount);
    }
};

template<class TStage>
class CInkStageOf : public CStageUnderTestOf<TStage>
{
public:
    using TStage::m_pColorGroupInfo;
    using TStage::m_pInkStripeParam;

    // Gives the stage another map. Before any band is fed to it.
    void Map_Replace(std::unique_ptr<CPrintUnitDataMap_Base> map)
    {
        delete this->m_pDataMap;
        this->m_pDataMap = map.release();
    }
};

using CInkStage = CInkStageOf<CUnitData2BoardData_S_AllUnit>;
using COneFIFOStage = CInkStageOf<CUnitData2BoardData_AllUnit_2>;
using CBandSetFIFO = CUnitData2BoardData_AllUnit_2::CBandSetFIFO;

// A colour band of exactly these bytes.
inline std::shared_ptr<const CBandData> Color_Make(const std::vector<unsigned char>& bytes)
{
    auto band = std::make_shared<CBandData>();
    band->Create(8, static_cast<int>(bytes.size()), 1, 1);
    std::copy(bytes.begin(), bytes.end(), band->m_pData);
    return band;
}

// Puts the job into the configuration: what the stripes need, and nothing of the data map.
inline void Job_Configure(CConfigGuard& config, const SModelJob& job)
{
    config.m_option.m_dataPushStyle = job.bByUnit ? SPushStyle::ByUnit : SPushStyle::ByPixel;
    SPrintSetup& param = config.m_param;
    param.m_jobInfo_CurPrint.m_bitsPerPixel = job.bitsPerPixel;
    param.m_curPrint_JobWidth = job.jobWidth;
    param.m_alignByteCountPerLine = job.alignBytes;
    param.m_maskData.m_maskCount_1 = job.maskCount;
    param.m_maskData.m_maskCount_2 = 1;
    param.m_inkStripeParam.leftStripeWidth = job.leftStripeWidth;
    param.m_inkStripeParam.rightStripeWidth = job.rightStripeWidth;
    param.m_inkStripeParam.unitPitch = job.unitPitch;
    param.m_inkStripeParam.unitPositionCount = job.unitPositionCount;
    param.m_unitInfo_Horizon = {};
    param.m_unitInfo_Horizon.m_xMaxOffset_Right2Left = job.xMaxOffset_Right2Left;
    param.m_unitInfo_Horizon.m_xMaxOffset_Left2Right = job.xMaxOffset_Left2Right;
    param.m_inkStripeColorData.clear();
    config.m_cart.m_headBaseInfo.m_bandWidth = job.bandWidth;
    config.m_cart.m_units.clear();
    SGroupSetup group;
    for (const SModelUnit& unit : job.units)
    {
        config.m_cart.m_units.push_back({unit.id, 0, 0, unit.direction});
        group.m_positions[unit.id] = unit.position;
        param.m_unitInfo_Horizon.m_units[unit.id] = {unit.id, unit.horizon_1, unit.horizon_2};
        if (unit.bHasColor)
        {
            param.m_inkStripeColorData[unit.id] = Color_Make(unit.color);
        }
    }
    config.m_colorGroups = {{patternLayoutGroup, group}};
    config.Apply();
}

// An element of the one-FIFO stage's input, and the bands in it: the stage's once it has taken the element.
inline SBufferData<CBandData*>* BandSet_Make(std::vector<std::unique_ptr<CBandData>> bands)
{
    auto* bandSet = new SBufferData<CBandData*>();
    bandSet->AllocateBuffer(static_cast<int>(bands.size()), true);
    for (std::size_t i = 0; i < bands.size(); ++i)
    {
        bandSet->data[i] = bands[i].release();
    }
    return bandSet;
}

// Queues an element, or the null marker, as soon as there is room. From one thread.
inline bool BandSet_Push(CBandSetFIFO& fifo, SBufferData<CBandData*>* bandSet, unsigned long timeoutMs = 10000)
{
    return fifo.HasSpaceEvent().Wait(timeoutMs, 0) && fifo.In(bandSet);
}

// What a stripe band, or a step's own band, holds.
inline std::vector<unsigned char> Data_Of(const CBandData& band)
{
    return {band.m_pData, band.m_pData + band.m_dataSize};
}

// The records with the operations that wrote them: "2 failure @File Class::Operation".
inline std::vector<std::string> Record_Operations(const CLogCapture& log)
{
    std::vector<std::string> operations;
    for (const SLogEntry& record : log.Records())
    {
        const std::string beforeArguments = record.function.substr(0, record.function.find('('));
        const std::string name = beforeArguments.substr(beforeArguments.rfind(' ') + 1);
        operations.push_back(std::to_string(static_cast<int>(record.severity)) + ' ' + record.message + " @" +
                             record.fileName + ' ' + name.substr(name.rfind(':') + 1));
    }
    return operations;
}

// An ink-stripe stage with a real map and a scripted output, without a thread: the test runs its operations. Four units
// on the cart, all with colour data that fits.
class CDrivenInkStage : public testing::Test
{
protected:
    CDrivenInkStage()
    {
        m_job.jobWidth = 40;
        m_job.xMaxOffset_Left2Right = 5;
        m_job.xMaxOffset_Right2Left = 7;
        m_job.leftStripeWidth = 8;
        m_job.rightStripeWidth = 12;
        m_job.unitPitch = 2;
        m_job.unitPositionCount = 4;
        for (int id = 0; id < 4; ++id)
        {
            const auto byte = static_cast<unsigned char>(0x11 * (id + 1));
            m_job.units.push_back({id, id + 1, 3 - id, id, 2 * id, true, std::vector<unsigned char>(4, byte)});
        }
    }

    // Configures the job and makes the stage ready for its first step.
    void Stage_Prepare()
    {
        Job_Configure(m_config, m_job);
        m_pStage = std::make_unique<CInkStage>();
        auto* map = new CPrintUnitDataMap_5();
        ASSERT_TRUE(map->Init(1, 16));
        m_pStage->m_pDataMap = map;
        m_pOutput = new CScriptedOutput(m_journal);
        m_pStage->m_pOutputFIFO = m_pOutput;
        m_pStage->m_processState = 3;
    }

    // Holds a band of the step's size for one unit as input.
    CBandData& Input_Hold(int unitIndex, int bandAttr = 1, CBandDataFIFO* fifo = nullptr)
    {
        auto band = Band_Make(unitIndex, m_job.bandWidth, CStripeModel(m_job).LineCount(bandAttr));
        band->m_bandAttr = bandAttr;
        m_pStage->m_pInputElements->push_back({band.release(), fifo});
        return *m_pStage->m_pInputElements->back().band;
    }

    const CBandData& Element(std::size_t index) const { return *m_pStage->m_pInputElements->at(index).band; }

    // The unit ids of all bands held.
    std::vector<int> Units() const
    {
        std::vector<int> units;
        for (const SInputElement& element : *m_pStage->m_pInputElements)
        {
            units.push_back(element.band->m_unitIndex);
        }
        return units;
    }

    CConfigGuard m_config;
    SModelJob m_job;
    Journal m_journal;
    std::unique_ptr<CInkStage> m_pStage;
    CScriptedOutput* m_pOutput = nullptr; // the stage's
};

inline void ExpectModelBand(const CBandData& band, const SModelBand& model)
{
    EXPECT_EQ(band.m_unitIndex, model.unitIndex);
    EXPECT_EQ(band.m_unitDirection, model.unitDirection);
    EXPECT_EQ(band.m_bandAttr, model.bandAttr);
    EXPECT_EQ(band.m_width, model.width);
    EXPECT_EQ(band.m_bitsPerPixel, model.bitsPerPixel);
    EXPECT_EQ(band.m_height, model.height);
    EXPECT_EQ(band.m_bytesPerLine, model.bytesPerLine);
    EXPECT_EQ(Data_Of(band), model.data);
}
