// How tests set up and hear the embedded edition.
#include "Tests/Support/PlatformSetup.h"

#include "Platform/GlobalConfig/CartInfo.h"
#include "Platform/GlobalConfig/ColorGroup.h"
#include "Platform/GlobalConfig/DPConfig.h"
#include "Platform/Log/CustomBoostLog.h"
#include "Platform/Thread/CreateThread.h"
#include "Platform/ThreadStatus/ThreadStatus.h"

#include <chrono>
#include <utility>

namespace
{

SRipJobInfo JobInfo_From(const SJobSetup& job)
{
    return {job.m_width, job.m_height, job.m_bitsPerPixel};
}

} // namespace

void Platform_Set(const SOptionSetup& option)
{
    GC_DPOption()->Set(
        {option.m_dataMapStyle, option.m_dataPushStyle, option.m_printerSupportBits, option.m_printerDataWidth});
}

void Platform_Set(const SConfigSetup& config)
{
    GC_DPConfig()->Set({config.m_lineGeneratorCount_Of_DataMap});
}

void Platform_Set(const SCartSetup& cart)
{
    SCartInfo info;
    for (const SUnitSetup& unit : cart.m_units)
    {
        info.m_units.push_back({unit.m_unitId, unit.m_colorIndex, unit.m_headIndex, unit.m_direction});
    }
    info.m_headBaseInfo = {cart.m_headBaseInfo.m_headCount, cart.m_headBaseInfo.m_bandWidth};
    GC_CartInfo()->Set(info);
}

void Platform_Set(const std::map<std::string, SGroupSetup>& groups)
{
    std::map<std::string, CColorGroupInfo> infos;
    for (const auto& [name, group] : groups)
    {
        CColorGroupInfo& info = infos[name == patternLayoutGroup ? CColorGroupInfo::Key_Pattern_Layout() : name];
        for (const auto& [unitId, position] : group.m_positions)
        {
            info.m_units[unitId] = {position, unitId};
        }
    }
    GC_ColorGroup()->Set(infos);
}

void Platform_Set(const SPrintSetup& print)
{
    const SStripeSetup& stripes = print.m_inkStripeParam;
    SPrintParam param;
    param.m_jobInfo = JobInfo_From(print.m_jobInfo);
    param.m_jobInfo_CurPrint = JobInfo_From(print.m_jobInfo_CurPrint);
    param.m_curPrint_JobWidth = print.m_curPrint_JobWidth;
    param.m_dotSizeMode = print.m_dotSizeMode;
    param.m_alignByteCountPerLine = print.m_alignByteCountPerLine;
    param.m_maskData = {print.m_maskData.m_mask, print.m_maskData.m_maskCount_1, print.m_maskData.m_maskCount_2};
    param.m_inkStripeParam = {stripes.m_word_1, stripes.leftStripeWidth, stripes.rightStripeWidth,  stripes.unitPitch,
                              stripes.m_word_5, stripes.unitPosition,    stripes.unitPositionCount, stripes.m_word_8};
    param.m_inkStripeColorData = print.m_inkStripeColorData;
    for (const auto& [unitId, horizon] : print.m_unitInfo_Horizon.m_units)
    {
        param.m_unitInfo_Horizon.m_units[unitId] = {horizon.m_unitId, horizon.m_horizon_1, horizon.m_horizon_2};
    }
    param.m_unitInfo_Horizon.m_xMaxOffset_Right2Left = print.m_unitInfo_Horizon.m_xMaxOffset_Right2Left;
    param.m_unitInfo_Horizon.m_xMaxOffset_Left2Right = print.m_unitInfo_Horizon.m_xMaxOffset_Left2Right;
    DPD_PrintParam()->Set(param);
}

int LogListener_Add(std::function<void(const SLogEntry&)> listener)
{
    return CCustomBoostLog::Listener_Add(
        [listener = std::move(listener)](const SLogRecord& record) {
            listener({record.severity, record.message, record.function, record.fileName, record.line});
        });
}

void LogListener_Remove(int listenerId)
{
    CCustomBoostLog::Listener_Remove(listenerId);
}

int ThreadBusy_OpenCount(int threadId)
{
    return CThreadStatusMonitor::BusyCount_Get(static_cast<ECustomThreadId>(threadId));
}

bool ThreadBusy_WasClosed(int threadId)
{
    static std::chrono::nanoseconds before{0};
    const auto now = CThreadStatusMonitor::BusyTime_Get(static_cast<ECustomThreadId>(threadId));
    return std::exchange(before, now) != now;
}

void SleepingThreads_Release()
{
#if !defined(_WIN32)
    SleepingThreads_End();
#endif
}

unsigned long ThreadExitCode_Get(void* threadHandle)
{
    DWORD exitCode = 0xDEAD;
    return GetExitCodeThread(threadHandle, &exitCode) ? exitCode : 0xDEAD;
}
