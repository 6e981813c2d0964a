// The ink-stripe stage: setup, stripe bands, output, and its own line mapping.
#include "UnitData2BoardData/UnitData2BoardData_S_AllUnit.h"

#include "DataMap/OrKernel.h"
#include "DataMap/PlatformWord.h"
#include "DataMap/PrintUnitDataMap_Base.h"
#include "KelCommon/KelLog.h"
#include "KelCommon/KelWait.h"
#include "Platform/BandData/BandData.h"
#include "Platform/GlobalConfig/CartInfo.h"
#include "Platform/GlobalConfig/ColorGroup.h"
#include "Platform/GlobalConfig/DPConfig.h"
#include "Platform/GlobalConfig/DPOption.h"
#include "Platform/PrintParam/PrintParamGlobal.h"
#include "Unit2Board/Unit2Board.h"
#include "UnitData2BoardData/InkStripeParam_Run.h"
#include "UnitData2BoardData/VectorAccess.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>
#include <set>

namespace
{

constexpr unsigned converterWaitMs = 3600000;

// Copies the finished lines of a colour band to the start of line `line` of a stripe band.
void Stripe_Copy(CBandData& band, int line, const CBandData& color)
{
    std::copy_n(color.m_pData, color.m_dataSize, band.m_pData + line * band.m_bytesPerLine);
}

} // namespace

CUnitData2BoardData_S_AllUnit::~CUnitData2BoardData_S_AllUnit()
{
    delete m_pInkStripeParam;
    m_pInkStripeParam = nullptr;
}

CUnitData2BoardData_S_AllUnit::CUnitData2BoardData_S_AllUnit() = default;

CUnitData2BoardData_S_AllUnit::CUnitData2BoardData_S_AllUnit(const CUnitData2BoardData_S_AllUnit& other) = default;

CUnitData2BoardData_S_AllUnit&
CUnitData2BoardData_S_AllUnit::operator=(const CUnitData2BoardData_S_AllUnit& other) = default;

bool CUnitData2BoardData_S_AllUnit::Create(bool checkInput, const std::vector<CBandDataFIFO*>& inputFIFOs)
{
    if (!CUnitData2BoardData_Base::Create(checkInput, inputFIFOs))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

void CUnitData2BoardData_S_AllUnit::Finally()
{
    CUnitData2BoardData_Base::Finally();
}

bool CUnitData2BoardData_S_AllUnit::Initialize()
{
    return CUnitData2BoardData_Base::Initialize();
}

int CUnitData2BoardData_S_AllUnit::OutputBufferCount_Get()
{
    const auto& mask = DPD_PrintParam()->MaskData_Ref();
    return MaskData_Count_1(mask) * MaskData_Count_2(mask) * 3;
}

// Once per stage: a later job in the same stage still uses the values of the first.
bool CUnitData2BoardData_S_AllUnit::Init_Param()
{
    if (m_pInkStripeParam != nullptr)
    {
        return true;
    }
    CPrintParamGlobal& param = *DPD_PrintParam();
    m_pInkStripeParam = new SInkStripeParam_Run();
    m_pInkStripeParam->pixelParam = param.InkStripeParam_Get();
    m_pInkStripeParam->jobWidth = param.CurPrint_JobWidth_Get();
    m_pInkStripeParam->jobInfo_3 = JobInfo_BitsPerPixel(param.JobInfo_CurPrint_Get());
    m_pInkStripeParam->xMaxOffset_Left2Right = param.UnitInfo_Horizon().XMaxOffset_Left2Right_Get();
    m_pInkStripeParam->xMaxOffset_Right2Left = param.UnitInfo_Horizon().XMaxOffset_Right2Left_Get();
    m_pInkStripeParam->maskCount_1 = MaskData_Count_1(param.MaskData_Ref());
    m_pColorGroupInfo = GC_ColorGroup()->ColorGroupInfo_By_Key(CColorGroupInfo::Key_Pattern_Layout());
    return true;
}

bool CUnitData2BoardData_S_AllUnit::AllocateOutputBuffer()
{
    if (!Init_Param())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    const SInkStripeParam_Pixel& pixelParam = m_pInkStripeParam->pixelParam;
    if (pixelParam.leftStripeWidth + pixelParam.rightStripeWidth >= 1 && !InkStripeBands_Append())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    if (!CUnitData2BoardData_Base::AllocateOutputBuffer())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

// Appends a stripe band for every rest unit. Those appended before a failure stay: they are deleted with the inputs.
bool CUnitData2BoardData_S_AllUnit::InkStripeBands_Append()
{
    std::vector<int> ids;
    if (!RestUnitIdList_Get(ids))
    {
        return false;
    }
    SInkStripeParam_Run& param = *m_pInkStripeParam;
    param.bandAttr = Vector_At(*m_pInputElements, 0).band->m_bandAttr;
    for (const int unitId : ids)
    {
        param.pixelParam.unitPosition = ColorGroupUnitInfo_Position(m_pColorGroupInfo->UnitInfo_Get(unitId));
        const auto& horizon = DPD_PrintParam()->UnitInfo_Horizon().HorizonInfo_Get(unitId);
        param.unitHorizon_2 = HorizonInfo_Left2Right(horizon);
        param.unitHorizon_1 = HorizonInfo_Right2Left(horizon);
        CBandData* band = nullptr;
        const bool bMade = InkStripeUnitData_Generate(band, unitId);
        std::unique_ptr<CBandData> own(band);
        if (!bMade)
        {
            return false;
        }
        m_pInputElements->push_back({own.release(), nullptr});
    }
    return true;
}

bool CUnitData2BoardData_S_AllUnit::AllocateOutputBuffer_ByUnit()
{
    if (!AllocateOutputBuffer_ByFrame())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CUnitData2BoardData_S_AllUnit::AllocateOutputBuffer_ByPixel()
{
    if (!AllocateOutputBuffer_ByFrame())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CUnitData2BoardData_S_AllUnit::AllocateOutputBuffer_ByFrame()
{
    std::unique_ptr<CBandData> band(new (std::nothrow) CBandData());
    const CBandData& first = *Vector_At(*m_pInputElements, 0).band;
    if (band == nullptr || !band->Create(m_pDataMap->DataFrameWidth() * first.m_width, first.m_height, 1, 1))
    {
        return false;
    }
    m_pOutputBand = band.release();
    return true;
}

bool CUnitData2BoardData_S_AllUnit::GenerateBandData()
{
    std::vector<CBandData*> bands;
    std::transform(m_pInputElements->begin(), m_pInputElements->end(), std::back_inserter(bands),
                   [](const SInputElement& element) { return element.band; });
    CUnit2Board converter;
    if (!converter.Create(GC_DPConfig()->LineGeneratorCount_Of_DataMap_Get(), bands.data(),
                          static_cast<int>(bands.size()), *m_pOutputBand, *m_pDataMap))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    if (!converter.WaitExit(converterWaitMs))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        converter.Stop(); // its threads may not outlive it
        converter.WaitExit(kelWait_WithoutLimit);
        return false;
    }
    return true;
}

// Stripe bands.

bool CUnitData2BoardData_S_AllUnit::RestUnitIdList_Get(std::vector<int>& ids)
{
    ids.clear();
    std::set<int> cartUnits;
    for (const auto& unit : GC_CartInfo()->CartUnitInfo_GetAll())
    {
        cartUnits.insert(CartUnitInfo_UnitId(unit));
    }
    // Equal counts mean that every unit has its band; who is who is not looked at.
    if (cartUnits.size() == m_pInputElements->size())
    {
        return true;
    }
    std::set<int> inputUnits;
    for (const SInputElement& element : *m_pInputElements)
    {
        inputUnits.insert(element.band->m_unitIndex);
    }
    std::set_difference(cartUnits.begin(), cartUnits.end(), inputUnits.begin(), inputUnits.end(),
                        std::back_inserter(ids));
    return true;
}

bool CUnitData2BoardData_S_AllUnit::InkStripeUnitData_Generate(CBandData*& band, int unitId)
{
    bool bMade = false;
    switch (static_cast<int>(GC_DPOption()->DataPushStyle_Get()))
    {
    case DataPushStyle_ByUnit:
        bMade = InkStripeUnitData_Generate_ByUnit(band, unitId);
        break;
    case DataPushStyle_ByPixel:
        bMade = InkStripeUnitData_Generate_ByPixel(band, unitId);
        break;
    default:
        break;
    }
    if (!bMade)
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    band->m_unitDirection = CartUnitInfo_Direction(GC_CartInfo()->CartUnitInfo_Get(unitId));
    return true;
}

// Every scan position is as many 1-bit lines as a pixel has bits.
bool CUnitData2BoardData_S_AllUnit::InkStripeUnitData_Generate_ByUnit(CBandData*& band, int unitId)
{
    if (!InkStripeBand_Make(band, unitId, m_pInkStripeParam->jobInfo_3, 1) || !AddInkStripe_Left_ByUnit(*band) ||
        !AddInkStripe_Right_ByUnit(*band))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

// Every scan position is one line of whole pixels.
bool CUnitData2BoardData_S_AllUnit::InkStripeUnitData_Generate_ByPixel(CBandData*& band, int unitId)
{
    if (!InkStripeBand_Make(band, unitId, 1, m_pInkStripeParam->jobInfo_3) || !AddInkStripe_Left_ByPixel(*band) ||
        !AddInkStripe_Right_ByPixel(*band))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CUnitData2BoardData_S_AllUnit::InkStripeBand_Make(CBandData*& band, int unitId, int linesPerPosition,
                                                       int bitsPerPixel)
{
    const SInkStripeParam_Run& param = *m_pInkStripeParam;
    const int offset =
        param.bandAttr == bandAttr_LeftToRight ? param.xMaxOffset_Left2Right : param.xMaxOffset_Right2Left;
    const int stripes = param.pixelParam.leftStripeWidth + param.pixelParam.rightStripeWidth;
    const int positions = offset + param.jobWidth / param.maskCount_1 + stripes;
    band = new CBandData();
    if (!band->Create(CartHeadBaseInfo_BandWidth(GC_CartInfo()->CartHeadBaseInfo_Get()), positions * linesPerPosition,
                      bitsPerPixel, DPD_PrintParam()->AlignByteCountPerLine()))
    {
        return false;
    }
    band->m_unitIndex = unitId;
    band->m_bandAttr = param.bandAttr;
    return true;
}

bool CUnitData2BoardData_S_AllUnit::AddInkStripe_Left_ByUnit(CBandData& band)
{
    if (!AddInkStripe_Left(band, m_pInkStripeParam->jobInfo_3))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CUnitData2BoardData_S_AllUnit::AddInkStripe_Right_ByUnit(CBandData& band)
{
    if (!AddInkStripe_Right(band, m_pInkStripeParam->jobInfo_3))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CUnitData2BoardData_S_AllUnit::AddInkStripe_Left_ByPixel(CBandData& band)
{
    if (!AddInkStripe_Left(band, 1))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CUnitData2BoardData_S_AllUnit::AddInkStripe_Right_ByPixel(CBandData& band)
{
    if (!AddInkStripe_Right(band, 1))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

// In the left-to-right pass the colour band is used without a look whether there is one: a unit that gets a stripe must
// have colour data.
bool CUnitData2BoardData_S_AllUnit::AddInkStripe_Left(CBandData& band, int linesPerPosition)
{
    const SInkStripeParam_Run& param = *m_pInkStripeParam;
    const SInkStripeParam_Pixel& pixel = param.pixelParam;
    if (pixel.leftStripeWidth < 1)
    {
        return true;
    }
    const CBandData* color = DPD_PrintParam()->InkStripeColorData_Get(band.m_unitIndex);
    if (param.bandAttr == bandAttr_LeftToRight)
    {
        const int position = pixel.unitPosition * pixel.unitPitch + param.unitHorizon_2;
        Stripe_Copy(band, position * linesPerPosition, *color);
        return true;
    }
    if (color == nullptr)
    {
        return false;
    }
    const int fromEnd = (pixel.unitPosition + 1) * pixel.unitPitch - param.unitHorizon_1 + param.xMaxOffset_Right2Left;
    Stripe_Copy(band, band.m_height - fromEnd * linesPerPosition, *color);
    return true;
}

bool CUnitData2BoardData_S_AllUnit::AddInkStripe_Right(CBandData& band, int linesPerPosition)
{
    const SInkStripeParam_Run& param = *m_pInkStripeParam;
    const SInkStripeParam_Pixel& pixel = param.pixelParam;
    if (pixel.rightStripeWidth < 1)
    {
        return true;
    }
    const CBandData* color = DPD_PrintParam()->InkStripeColorData_Get(band.m_unitIndex);
    if (color == nullptr)
    {
        return false;
    }
    const int positionsBehind = pixel.unitPositionCount - pixel.unitPosition;
    if (param.bandAttr == bandAttr_LeftToRight)
    {
        const int fromEnd = positionsBehind * pixel.unitPitch - param.unitHorizon_2 + param.xMaxOffset_Left2Right;
        Stripe_Copy(band, band.m_height - fromEnd * linesPerPosition, *color);
    }
    else
    {
        const int position = (positionsBehind - 1) * pixel.unitPitch + param.unitHorizon_1;
        Stripe_Copy(band, position * linesPerPosition, *color);
    }
    return true;
}

// Line mapping.

bool CUnitData2BoardData_S_AllUnit::MapBandData_Line_OneInput(int line, const CBandData& input)
{
    constexpr int chunkCount = 4;
    constexpr int chunkBits = 100;
    if (line >= input.m_height)
    {
        return true;
    }
    const unsigned char* src = input.m_pData + line * input.m_bytesPerLine;
    unsigned char* dst = m_pOutputBand->m_pData + line * m_pOutputBand->m_bytesPerLine;
    const int group = input.m_unitIndex / 8;
    const int slot = input.m_unitIndex % 8;
    const bool bAscending =
        CartUnitInfo_Direction(GC_CartInfo()->CartUnitInfo_Get(input.m_unitIndex)) == unitDirection_Ascending;
    for (int i = 0; i < chunkCount; ++i)
    {
        const int block = bAscending ? i : chunkCount - 1 - i;
        const int boardUnit = slot + 8 * (chunkCount * group + block);
        if (!MapBandData_Buffer(boardUnit, src, chunkBits * i, chunkBits, dst, m_pOutputBand->m_bytesPerLine))
        {
            KEL_LOG(kelSeverity_Failure, "failure");
            return false;
        }
    }
    return true;
}

// The head counts board bytes by the frame width, body and tail by the table's entry size. For the 1-bit maps that this
// stage is built for the two are the same.
bool CUnitData2BoardData_S_AllUnit::MapBandData_Buffer(int unitIndex, const unsigned char* src, int srcBitOffset,
                                                       int bitCount, unsigned char* dst, int /*dstByteCount*/)
{
    const int frameWidth = m_pDataMap->DataFrameWidth();
    const int entrySize = m_pDataMap->MapDataSizeOfByte();
    const int skipped = srcBitOffset % 8;
    const int head = skipped >= 1 ? 8 - skipped : 0;
    if (head > 0)
    {
        const unsigned char* entry = m_pDataMap->ByteMapData_Buffer(unitIndex, src[srcBitOffset / 8]);
        const int size = frameWidth * head / 8;
        COrKernel::Or_Bytes(dst, entry + frameWidth * skipped / 8, size);
        dst += size;
    }
    const unsigned char* body = src + (srcBitOffset + head) / 8;
    const int bodyBytes = (bitCount - head) / 8;
    for (int i = 0; i < bodyBytes; ++i)
    {
        COrKernel::Or_Bytes(dst, m_pDataMap->ByteMapData_Buffer(unitIndex, body[i]), entrySize);
        dst += entrySize;
    }
    const int tail = (bitCount - head) % 8;
    if (tail >= 1)
    {
        COrKernel::Or_Bytes(dst, m_pDataMap->ByteMapData_Buffer(unitIndex, body[bodyBytes]), entrySize * tail / 8);
    }
    return true;
}
