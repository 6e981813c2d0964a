// How tests set up and hear the plain edition.
#include "Tests/Support/PlatformSetup.h"

#include "PlainLog.h"
#include "PlainSetup.h"
#include "PlainThread.h"
#include "PlainThreadStatus.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace
{

SRipJobInfo JobInfo_From(const SJobSetup& job)
{
    return {job.m_width, job.m_height, job.m_bitsPerPixel};
}

// The listeners of all tests; the edition has room for one.
struct SListeners
{
    std::mutex mutex; // guards what follows
    int lastId = 0;
    std::map<int, std::function<void(const SLogEntry&)>> byId;
};

SListeners& Listeners_Get()
{
    static SListeners listeners;
    return listeners;
}

void Record_Tell(const SPlainLogRecord& record)
{
    SListeners& listeners = Listeners_Get();
    const std::lock_guard guard(listeners.mutex);
    for (const auto& [id, listener] : listeners.byId)
    {
        listener({static_cast<ESeverityLevel>(record.severity), record.message, record.function, record.fileName,
                  record.line});
    }
}

} // namespace

void Platform_Set(const SOptionSetup& option)
{
    SPlainSetup& setup = PlainSetup_Get();
    setup.dataMapStyle = static_cast<std::int32_t>(option.m_dataMapStyle);
    setup.dataPushStyle = static_cast<std::int32_t>(option.m_dataPushStyle);
    setup.printerSupportBits = static_cast<std::int32_t>(option.m_printerSupportBits);
    setup.printerDataWidth = option.m_printerDataWidth;
}

void Platform_Set(const SConfigSetup& config)
{
    PlainSetup_Get().lineGeneratorCount = config.m_lineGeneratorCount_Of_DataMap;
}

void Platform_Set(const SCartSetup& cart)
{
    SPlainSetup& setup = PlainSetup_Get();
    setup.units.clear();
    for (const SUnitSetup& unit : cart.m_units)
    {
        setup.units.push_back({unit.m_unitId, unit.m_colorIndex, unit.m_headIndex, unit.m_direction});
    }
    setup.heads = {cart.m_headBaseInfo.m_headCount, cart.m_headBaseInfo.m_bandWidth};
}

void Platform_Set(const std::map<std::string, SGroupSetup>& groups)
{
    const auto found = groups.find(patternLayoutGroup);
    SPlainSetup& setup = PlainSetup_Get();
    setup.bHasGroup = found != groups.end();
    setup.groupPositions = setup.bHasGroup ? found->second.m_positions : std::map<int, std::int32_t>();
}

void Platform_Set(const SPrintSetup& print)
{
    const SStripeSetup& stripes = print.m_inkStripeParam;
    SPlainSetup& setup = PlainSetup_Get();
    setup.jobInfo = JobInfo_From(print.m_jobInfo);
    setup.jobInfo_CurPrint = JobInfo_From(print.m_jobInfo_CurPrint);
    setup.jobWidth = print.m_curPrint_JobWidth;
    setup.dotSizeMode = static_cast<std::int32_t>(print.m_dotSizeMode);
    setup.alignByteCountPerLine = print.m_alignByteCountPerLine;
    std::copy(print.m_maskData.m_mask.begin(), print.m_maskData.m_mask.end(), std::begin(setup.mask.word));
    setup.mask.word[16] = print.m_maskData.m_maskCount_1;
    setup.mask.word[17] = print.m_maskData.m_maskCount_2;
    setup.inkStripes = {stripes.m_word_1, stripes.leftStripeWidth, stripes.rightStripeWidth,  stripes.unitPitch,
                        stripes.m_word_5, stripes.unitPosition,    stripes.unitPositionCount, stripes.m_word_8};
    setup.inkStripeColors = print.m_inkStripeColorData;
    setup.horizons.clear();
    for (const auto& [unitId, horizon] : print.m_unitInfo_Horizon.m_units)
    {
        setup.horizons[unitId] = {horizon.m_unitId, horizon.m_horizon_1, horizon.m_horizon_2};
    }
    setup.xMaxOffset_Right2Left = print.m_unitInfo_Horizon.m_xMaxOffset_Right2Left;
    setup.xMaxOffset_Left2Right = print.m_unitInfo_Horizon.m_xMaxOffset_Left2Right;
}

int LogListener_Add(std::function<void(const SLogEntry&)> listener)
{
    SListeners& listeners = Listeners_Get();
    int id = 0;
    {
        const std::lock_guard guard(listeners.mutex);
        id = ++listeners.lastId;
        listeners.byId[id] = std::move(listener);
    }
    PlainLog_Listen(&Record_Tell);
    return id;
}

void LogListener_Remove(int listenerId)
{
    SListeners& listeners = Listeners_Get();
    bool bLast = false;
    {
        const std::lock_guard guard(listeners.mutex);
        listeners.byId.erase(listenerId);
        bLast = listeners.byId.empty();
    }
    if (bLast)
    {
        PlainLog_Listen(nullptr);
    }
}

int ThreadBusy_OpenCount(int threadId)
{
    return SPlainThreadStatus::OpenCount_Get(threadId);
}

bool ThreadBusy_WasClosed(int threadId)
{
    static int before = 0;
    const int now = SPlainThreadStatus::ClosedCount_Get(threadId);
    return std::exchange(before, now) != now;
}

void SleepingThreads_Release() {} // it has none

unsigned long ThreadExitCode_Get(void* threadHandle)
{
    return PlainThread_ExitCode(threadHandle);
}
