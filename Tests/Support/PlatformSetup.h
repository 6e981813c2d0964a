// What a test says to the platform and hears from it, whatever edition it runs on: configuration, log records, what the
// thread-status monitor saw. The library cannot include this header.
//
// Each edition has an implementation of its own: Tests/Support/Embedded and Tests/PlainPlatform/Support. A host has
// other ways to say these things, edition by edition; the library only hears them.
#pragma once

#include "Platform/BandData/BandData.h"
#include "Platform/GlobalConfig/DPOption.h"
#include "Platform/Log/SeverityLevel.h"
#include "Platform/PrintParam/PrintParamGlobal.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

// The values of the platform's enumerations, whose names are the edition's own.

struct SMapStyle
{
    static constexpr auto Frame16 = static_cast<EDataMapStyle>(1);
    static constexpr auto Block = static_cast<EDataMapStyle>(3);
    static constexpr auto Block13 = static_cast<EDataMapStyle>(4);
    static constexpr auto FramePerPixel = static_cast<EDataMapStyle>(6);
    static constexpr auto ByteInterleaved = static_cast<EDataMapStyle>(7);
    static constexpr auto PlanePair = static_cast<EDataMapStyle>(9);
};

struct SPushStyle
{
    static constexpr auto ByUnit = static_cast<EDataPushStyle>(1);
    static constexpr auto ByPixel = static_cast<EDataPushStyle>(2);
};

struct SSupportBits
{
    static constexpr auto OneBit = static_cast<EPrinterSupportBits>(1);
    static constexpr auto TwoBit = static_cast<EPrinterSupportBits>(2);
    static constexpr auto Multiple = static_cast<EPrinterSupportBits>(5);
};

struct SDotSize
{
    static constexpr auto None = static_cast<EDotSizeMode>(0);
    static constexpr auto Small = static_cast<EDotSizeMode>(1);
    static constexpr auto Middle = static_cast<EDotSizeMode>(2);
    static constexpr auto Big = static_cast<EDotSizeMode>(3);
};

struct SSeverity
{
    static constexpr auto Debug = static_cast<ESeverityLevel>(0);
    static constexpr auto Info = static_cast<ESeverityLevel>(1);
    static constexpr auto Error = static_cast<ESeverityLevel>(2);
};

// The configuration. Words stand in the platform's order.

struct SOptionSetup
{
    EDataMapStyle m_dataMapStyle = SMapStyle::FramePerPixel;
    EDataPushStyle m_dataPushStyle = SPushStyle::ByPixel;
    EPrinterSupportBits m_printerSupportBits = SSupportBits::OneBit;
    int m_printerDataWidth = 16;
};

struct SConfigSetup
{
    int m_lineGeneratorCount_Of_DataMap = 1;
};

struct SUnitSetup
{
    std::int32_t m_unitId = 0;
    std::int32_t m_colorIndex = 0;
    std::int32_t m_headIndex = 0;
    std::int32_t m_direction = 0;
};

struct SHeadSetup
{
    std::int32_t m_headCount = 0;
    std::int32_t m_bandWidth = 0;
};

struct SCartSetup
{
    std::vector<SUnitSetup> m_units;
    SHeadSetup m_headBaseInfo;
};

// The units' positions in one colour group, by unit id.
struct SGroupSetup
{
    std::map<int, std::int32_t> m_positions;
};

// The name that tests give to the group of the current pattern layout. Under any other name stands a group that the
// library has no reason to ask for.
inline const std::string patternLayoutGroup = "pattern layout";

struct SJobSetup
{
    std::int32_t m_width = 0;
    std::int32_t m_height = 0;
    std::int32_t m_bitsPerPixel = 0;
};

struct SStripeSetup
{
    std::int32_t m_word_1 = 0;
    std::int32_t leftStripeWidth = 0;
    std::int32_t rightStripeWidth = 0;
    std::int32_t unitPitch = 0;
    std::int32_t m_word_5 = 0;
    std::int32_t unitPosition = 0;
    std::int32_t unitPositionCount = 0;
    std::int16_t m_word_8 = 0;
};

struct SMaskSetup
{
    std::array<std::int32_t, 16> m_mask = {};
    std::int32_t m_maskCount_1 = 0;
    std::int32_t m_maskCount_2 = 0;
};

struct SHorizonSetup
{
    std::int32_t m_unitId = 0;
    std::int32_t m_horizon_1 = 0;
    std::int32_t m_horizon_2 = 0;
};

struct SHorizonsSetup
{
    std::map<int, SHorizonSetup> m_units; // by unit id
    int m_xMaxOffset_Right2Left = 0;
    int m_xMaxOffset_Left2Right = 0;
};

struct SPrintSetup
{
    SJobSetup m_jobInfo;
    SJobSetup m_jobInfo_CurPrint;
    int m_curPrint_JobWidth = 0;
    EDotSizeMode m_dotSizeMode = SDotSize::None;
    int m_alignByteCountPerLine = 1;
    SMaskSetup m_maskData;
    SStripeSetup m_inkStripeParam;
    std::map<int, std::shared_ptr<const CBandData>> m_inkStripeColorData; // by unit id
    SHorizonsSetup m_unitInfo_Horizon;
};

// Each replaces its part of the configuration. Not while a stage reads it.
void Platform_Set(const SOptionSetup& option);
void Platform_Set(const SConfigSetup& config);
void Platform_Set(const SCartSetup& cart);
void Platform_Set(const std::map<std::string, SGroupSetup>& groups); // by name
void Platform_Set(const SPrintSetup& print);

// One log record.
struct SLogEntry
{
    ESeverityLevel severity = SSeverity::Debug;
    std::string message;
    std::string function; // full signature of the function that wrote the record
    std::string fileName; // base name of its source file, without extension
    int line = 0;
};

// `listener` is called for every record, on the thread that wrote it, until Remove has returned.
int LogListener_Add(std::function<void(const SLogEntry&)> listener);
void LogListener_Remove(int listenerId);

// How many scopes of this identity are open now, and whether any was closed since the last call.
int ThreadBusy_OpenCount(int threadId);
bool ThreadBusy_WasClosed(int threadId);

// Ends the system threads that an edition keeps for later, if it keeps any.
void SleepingThreads_Release();

// What the start routine of a worker's thread that has ended returned.
unsigned long ThreadExitCode_Get(void* threadHandle);
