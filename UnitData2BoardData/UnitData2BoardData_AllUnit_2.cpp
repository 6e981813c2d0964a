// The one-FIFO stage: setup, taking a band set, and deleting it.
#include "UnitData2BoardData/UnitData2BoardData_AllUnit_2.h"

#include "DataMap/PlatformWord.h"
#include "DataMap/PrintUnitMap_Factory.h"
#include "KelCommon/KelLog.h"
#include "KelCommon/KelWait.h"
#include "Platform/BandData/BandData.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"
#include "Platform/PrintParam/PrintParamGlobal.h"

CUnitData2BoardData_AllUnit_2::CUnitData2BoardData_AllUnit_2() = default;

CUnitData2BoardData_AllUnit_2::CUnitData2BoardData_AllUnit_2(const CUnitData2BoardData_AllUnit_2& other) = default;

CUnitData2BoardData_AllUnit_2&
CUnitData2BoardData_AllUnit_2::operator=(const CUnitData2BoardData_AllUnit_2& other) = default;

CUnitData2BoardData_AllUnit_2::~CUnitData2BoardData_AllUnit_2() = default;

bool CUnitData2BoardData_AllUnit_2::Create(CBandSetFIFO& inputFIFO)
{
    m_pInputBufferFIFO = &inputFIFO;
    m_pOutputFIFO = new CBandDataFIFO_S(1);
    m_outputBandNo = 0;
    m_pDataMap = CPrintUnitMap_Factory::Init_DataMap(JobInfo_BitsPerPixel(DPD_PrintParam()->JobInfo_Get()),
                                                     DPD_PrintParam()->DotSizeMode_Get());
    if (!Start("CUnitData2BoardData_AllUnit_2"))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CUnitData2BoardData_AllUnit_2::GetInputData()
{
    SBufferData<CBandData*>* bandSet = nullptr;
    if (!m_pOutputFIFO->WaitForIn(kelWait_Retried) || !BandSet_Take(bandSet))
    {
        return true;
    }
    if (bandSet == nullptr) // the end of the input
    {
        m_pOutputFIFO->SetCompletedFlag();
        Stop();
        return true;
    }
    if (bandSet->count <= 0)
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false; // the element is abandoned, not freed: part of this operation's behaviour
    }
    for (int i = 0; i < bandSet->count; ++i)
    {
        m_pInputElements->push_back({bandSet->data[i], nullptr});
    }
    delete bandSet; // with its array; the bands are the stage's
    SetState_AllocateOutputBuffer();
    return true;
}

// Tries, waits once, tries again. False: nothing came; true with null: the end marker came.
bool CUnitData2BoardData_AllUnit_2::BandSet_Take(SBufferData<CBandData*>*& bandSet)
{
    if (m_pInputBufferFIFO->Out(bandSet))
    {
        return true;
    }
    m_pInputBufferFIFO->HasDataEvent().Wait(kelWait_Retried, 0);
    return m_pInputBufferFIFO->Out(bandSet);
}

bool CUnitData2BoardData_AllUnit_2::Release_InputElement_Internal()
{
    if (m_pInputElements == nullptr)
    {
        return true;
    }
    for (const SInputElement& element : *m_pInputElements)
    {
        delete element.band;
    }
    m_pInputElements->clear();
    return true;
}
