// The conversion stage: state machine, input gathering, output allocation and line mapping.
#include "UnitData2BoardData/UnitData2BoardData_Base.h"

#include "DataMap/OrKernel.h"
#include "DataMap/PlatformWord.h"
#include "DataMap/PrintUnitDataMap_Base.h"
#include "DataMap/PrintUnitMap_Factory.h"
#include "KelCommon/KelLog.h"
#include "KelCommon/KelWait.h"
#include "Platform/BandData/BandData.h"
#include "Platform/DataProcess/BandDataFIFO.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"
#include "Platform/PrintParam/PrintParamGlobal.h"
#include "Platform/ThreadStatus/ThreadStatus.h"
#include "UnitData2BoardData/VectorAccess.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>

template class CKelBaseThread<CUnitData2BoardData_Base>;

CUnitData2BoardData_Base::CUnitData2BoardData_Base() : m_pInputElements(new std::vector<SInputElement>()) {}

CUnitData2BoardData_Base::CUnitData2BoardData_Base(const CUnitData2BoardData_Base& other) = default;

CUnitData2BoardData_Base& CUnitData2BoardData_Base::operator=(const CUnitData2BoardData_Base& other) = default;

CUnitData2BoardData_Base::~CUnitData2BoardData_Base()
{
    delete m_pOutputFIFO;
    m_pOutputFIFO = nullptr;
    delete m_pInputFIFOs;
    m_pInputFIFOs = nullptr;
    delete m_pOutputBand;
    m_pOutputBand = nullptr;
    Release_Input();
    delete m_pDataMap;
    m_pDataMap = nullptr;
}

bool CUnitData2BoardData_Base::Create(bool checkInput, const std::vector<CBandDataFIFO*>& inputFIFOs)
{
    m_bCheckInput = checkInput;
    m_pDataMap = CPrintUnitMap_Factory::Init_DataMap(JobInfo_BitsPerPixel(DPD_PrintParam()->JobInfo_Get()),
                                                     DPD_PrintParam()->DotSizeMode_Get());
    m_pInputFIFOs = new std::vector<CBandDataFIFO*>(inputFIFOs);
    m_pOutputFIFO = new CBandDataFIFO_S(OutputBufferCount_Get());
    m_outputBandNo = 0;
    if (!Start("CUnitData2BoardData_Base"))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

CBandDataFIFO_S* CUnitData2BoardData_Base::OutputProcessor_Get()
{
    return m_pOutputFIFO;
}

int CUnitData2BoardData_Base::OutputBufferCount_Get()
{
    return 3;
}

int CUnitData2BoardData_Base::AlignBytesPerLine()
{
    return 1;
}

void CUnitData2BoardData_Base::SetState_AllocateOutputBuffer()
{
    m_processState = State_AllocateOutputBuffer;
}

void CUnitData2BoardData_Base::SetState_Process()
{
    m_processState = State_Process;
}

void CUnitData2BoardData_Base::Stop()
{
    TamBaseThread::Stop();
}

void CUnitData2BoardData_Base::Finally()
{
    TamBaseThread::Finally();
}

bool CUnitData2BoardData_Base::Prepare()
{
    if (!TamBaseThread::Prepare())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    m_processState = State_Initialize;
    return true;
}

bool CUnitData2BoardData_Base::OneLoop()
{
    const std::int32_t state = m_processState;
    if (ProcessState_Run())
    {
        return true;
    }
    KEL_LOG(kelSeverity_Failure, "m_processState = " + std::to_string(state));
    Stop();
    return false;
}

bool CUnitData2BoardData_Base::ProcessState_Run()
{
    switch (m_processState)
    {
    case State_Initialize:
        return Initialize();
    case State_GetInputData:
        return GetInputData();
    case State_AllocateOutputBuffer:
        return AllocateOutputBuffer();
    case State_Process:
        return Process();
    case State_ReleaseInputElement:
        return ReleaseInputElement();
    default:
        return false;
    }
}

bool CUnitData2BoardData_Base::Initialize()
{
    m_processState = State_GetInputData;
    return true;
}

// Input.

bool CUnitData2BoardData_Base::GetInputData()
{
    if (m_pInputElements->empty() && !Vector_At(*m_pInputFIFOs, 0)->Full_WaitForOut(kelWait_Retried))
    {
        if (AreInputsCompleted())
        {
            KEL_LOG(kelSeverity_Completion, "Complete : CUnitData2BoardData_Base");
            m_pOutputFIFO->SetCompletedFlag();
            Stop();
        }
        return true;
    }
    // No input is taken while its result could not be passed on.
    if (!m_pOutputFIFO->WaitForIn(kelWait_Retried) || !InputElements_Gather())
    {
        return true;
    }
    if (!m_bCheckInput || !IsStepSkipped())
    {
        m_processState = State_AllocateOutputBuffer;
        return true;
    }
    if (!Release_InputElement_Internal())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

// Asks them in order, up to the first that goes on.
bool CUnitData2BoardData_Base::AreInputsCompleted() const
{
    return std::all_of(m_pInputFIFOs->begin(), m_pInputFIFOs->end(),
                       [](CBandDataFIFO* fifo) { return fifo->IsCompleted(); });
}

// Takes the bands that the step still lacks, in FIFO order. False if one did not come in time; the others stay held.
bool CUnitData2BoardData_Base::InputElements_Gather()
{
    for (std::size_t i = m_pInputElements->size(); i < m_pInputFIFOs->size(); ++i)
    {
        CBandDataFIFO* fifo = (*m_pInputFIFOs)[i];
        CBandData* band = nullptr;
        if (!fifo->Full_Out(band, kelWait_Retried) || band == nullptr)
        {
            return false;
        }
        m_pInputElements->push_back({band, fifo});
    }
    return true;
}

bool CUnitData2BoardData_Base::IsStepSkipped() const
{
    return std::all_of(m_pInputElements->begin(), m_pInputElements->end(),
                       [](const SInputElement& element) { return element.band->m_bSkip; });
}

bool CUnitData2BoardData_Base::Check_InputData()
{
    if (m_pInputElements->empty())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    const CBandData& first = *m_pInputElements->front().band;
    for (const SInputElement& element : *m_pInputElements)
    {
        if (element.band->m_height != first.m_height)
        {
            KEL_LOG(kelSeverity_Failure, "failure");
            return false;
        }
        if (element.band->m_width != first.m_width)
        {
            KEL_LOG(kelSeverity_Failure, "failure");
            return false;
        }
    }
    return true;
}

bool CUnitData2BoardData_Base::ReleaseInputElement()
{
    if (m_pInputElements->empty())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    if (!Release_InputElement_Internal())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    m_processState = State_GetInputData;
    return true;
}

bool CUnitData2BoardData_Base::Release_InputElement_Internal()
{
    if (m_pInputElements == nullptr)
    {
        return true;
    }
    for (const SInputElement& element : *m_pInputElements)
    {
        if (element.fifo == nullptr)
        {
            delete element.band;
        }
        else if (!element.fifo->Empty_In(element.band, kelWait_Retried))
        {
            KEL_LOG(kelSeverity_Failure, "failure");
            return false;
        }
    }
    m_pInputElements->clear();
    return true;
}

bool CUnitData2BoardData_Base::Release_Input()
{
    if (m_pInputElements != nullptr)
    {
        for (const SInputElement& element : *m_pInputElements)
        {
            delete element.band;
        }
        delete m_pInputElements;
        m_pInputElements = nullptr;
    }
    return true;
}

// Output.

bool CUnitData2BoardData_Base::AllocateOutputBuffer()
{
    if (!Check_InputData())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    auto* band = new (std::nothrow) CBandData();
    if (band == nullptr)
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    const CBandData& first = *m_pInputElements->front().band;
    const int boardBits = m_pDataMap->SrcPixelCount_2_BoardBitCount(first.m_width);
    if (!band->Create(boardBits, first.m_height, 1, AlignBytesPerLine()))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false; // the band is abandoned, not deleted: part of this operation's behaviour
    }
    m_pOutputBand = band;
    m_processState = State_Process;
    return true;
}

bool CUnitData2BoardData_Base::Process()
{
    const CAutoReleaseThreadBusy busy(static_cast<ECustomThreadId>(threadId_UnitData2BoardData));
    if (m_pInputElements->empty())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    if (!GenerateBandData())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    if (m_pInputElements->empty()) // GenerateBandData is virtual: an override may have given them back
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    BandHeader_Copy(*m_pOutputBand, *m_pInputElements->front().band);
    m_pOutputBand->m_bandNo = m_outputBandNo++;
    if (!m_pOutputFIFO->In(m_pOutputBand, kelWait_Retried))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    m_pOutputBand = nullptr; // the FIFO's
    m_processState = State_ReleaseInputElement;
    return true;
}

bool CUnitData2BoardData_Base::GenerateBandData()
{
    for (int line = 0; line < m_pOutputBand->m_height; ++line)
    {
        if (!MapBandData_Line_AllInput(line))
        {
            KEL_LOG(kelSeverity_Failure, "failure");
            return false;
        }
    }
    return true;
}

bool CUnitData2BoardData_Base::MapBandData_Line_AllInput(int line)
{
    for (const SInputElement& element : *m_pInputElements)
    {
        if (!MapBandData_Line_OneInput(line, *element.band))
        {
            KEL_LOG(kelSeverity_Failure, "failure");
            return false;
        }
    }
    return true;
}

// Maps through the table alone, byte by byte, as the maps that keep the generic line mapping do.
bool CUnitData2BoardData_Base::MapBandData_Line_OneInput(int line, const CBandData& input)
{
    if (line >= input.m_height)
    {
        return true;
    }
    const unsigned char* src = input.m_pData + line * input.m_bytesPerLine;
    unsigned char* dst = m_pOutputBand->m_pData + line * m_pOutputBand->m_bytesPerLine;
    const int bits = input.m_width * input.m_bitsPerPixel;
    const int fullBytes = bits / 8;
    const int entrySize = m_pDataMap->MapDataSizeOfByte();
    for (int i = 0; i < fullBytes; ++i)
    {
        COrKernel::Or_Bytes(dst, m_pDataMap->ByteMapData_Buffer(input.m_unitIndex, src[i]), entrySize);
        dst += entrySize;
    }
    if (bits % 8 > 0)
    {
        // The last source byte is looked up whole; the board line's end clips what it gives.
        const int tail = std::min(m_pOutputBand->m_bytesPerLine - entrySize * fullBytes, entrySize);
        COrKernel::Or_Bytes(dst, m_pDataMap->ByteMapData_Buffer(input.m_unitIndex, src[fullBytes]), tail);
    }
    return true;
}

void CUnitData2BoardData_Base::WriteDumpFile(CBandData& /*band*/) {}
