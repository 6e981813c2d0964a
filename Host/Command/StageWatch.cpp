// What the watch keeps, and its texts.
#include "Host/Command/StageWatch.h"

#include "Host/Command/Conversion.h"
#include "Host/MemoryWatch.h"

#include <array>
#include <cstddef>
#include <new>

void CStageWatch::State_Set(int state, int bandCount)
{
    m_state = state;
    m_bandCount = bandCount;
}

void CStageWatch::Band_Set(std::int64_t width, std::int64_t lineCount)
{
    m_bandWidth = width;
    m_bandLines = lineCount;
}

void CStageWatch::Exception_Keep()
{
    const std::lock_guard guard(m_lock);
    m_error = std::current_exception();
}

// A record may be lost when there is no memory for it.
bool CStageWatch::HasLostWorker() const
{
    return m_pRecords->HasLostWorker() || Memory_HasRunOut();
}

std::string CStageWatch::Failure_Text() const
{
    constexpr std::int64_t bitsPerByte = 8;
    const std::int64_t bytes = (m_bandWidth + bitsPerByte - 1) / bitsPerByte * m_bandLines;
    const std::string band = "a board band of " + std::to_string(m_bandWidth) + " bits x " +
                             std::to_string(m_bandLines) + " lines, " + std::to_string(bytes) + " bytes";
    if (m_bNoBand)
    {
        return "there is no memory for " + band + ", and the stripe bands beside it";
    }
    const std::lock_guard guard(m_lock);
    if (m_error == nullptr && !Memory_HasRunOut())
    {
        return "";
    }
    try
    {
        if (m_error != nullptr)
        {
            std::rethrow_exception(m_error);
        }
    }
    catch (const std::bad_alloc&)
    {
        // as below
    }
    catch (const std::exception& error)
    {
        return error.what();
    }
    catch (...)
    {
        return "for an unknown reason";
    }
    return "out of memory at " + band;
}

std::string StageState_Text(int state)
{
    static constexpr std::array names = {"not begun", "Initialize",         "GetInputData", "AllocateOutputBuffer",
                                         "Process",   "ReleaseInputElement"};
    const bool bNamed = state >= 0 && static_cast<std::size_t>(state) < names.size();
    return std::to_string(state) + (bNamed ? std::string(" ") + names[static_cast<std::size_t>(state)] : "");
}
