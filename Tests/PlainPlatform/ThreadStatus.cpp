// The thread-status monitor: two counts for every role.
#include "Platform/ThreadStatus/ThreadStatus.h"

#include "PlainThreadStatus.h"

#include <map>
#include <mutex>

namespace
{

struct SCounts
{
    int open = 0;
    int closed = 0;
};

std::mutex g_mutex; // guards g_counts
std::map<int, SCounts> g_counts;

} // namespace

CAutoReleaseThreadBusy::CAutoReleaseThreadBusy(ECustomThreadId id) : m_id(id)
{
    const std::lock_guard guard(g_mutex);
    ++g_counts[m_id].open;
}

CAutoReleaseThreadBusy::~CAutoReleaseThreadBusy()
{
    const std::lock_guard guard(g_mutex);
    --g_counts[m_id].open;
    ++g_counts[m_id].closed;
}

int SPlainThreadStatus::OpenCount_Get(int threadId)
{
    const std::lock_guard guard(g_mutex);
    return g_counts[threadId].open;
}

int SPlainThreadStatus::ClosedCount_Get(int threadId)
{
    const std::lock_guard guard(g_mutex);
    return g_counts[threadId].closed;
}
