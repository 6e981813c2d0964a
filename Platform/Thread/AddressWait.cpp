// The system's part: its own wait queues where it has them, elsewhere a few condition variables that addresses share.
#include "Platform/Thread/AddressWait.h"

#if defined(__linux__)

#include <climits>
#include <ctime>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

static_assert(sizeof(CAddressWait::Word) == sizeof(std::uint32_t) && CAddressWait::Word::is_always_lock_free);

void Wake(const CAddressWait::Word* word, int count)
{
    syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, count, nullptr, nullptr, 0);
}

} // namespace

void CAddressWait::Sleep(const Word& word, std::uint32_t seen, TimePoint deadline)
{
    timespec time = {};
    const timespec* limit = nullptr;
    if (deadline != withoutLimit)
    {
        const auto sinceBoot = deadline.time_since_epoch(); // the steady clock is the one that the kernel takes here
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sinceBoot);
        time.tv_sec = static_cast<std::time_t>(seconds.count());
        time.tv_nsec = static_cast<long>(std::chrono::nanoseconds(sinceBoot - seconds).count());
        limit = &time;
    }
    syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, seen, limit, nullptr, FUTEX_BITSET_MATCH_ANY);
}

void CAddressWait::WakeOne(const Word* word)
{
    Wake(word, 1);
}

void CAddressWait::WakeAll(const Word* word)
{
    Wake(word, INT_MAX);
}

#elif defined(_WIN32)

#include "Platform/Thread/CreateThread.h"

namespace
{

// The same address as the system takes it.
void* Address_Of(const CAddressWait::Word* word)
{
    return const_cast<CAddressWait::Word*>(word);
}

} // namespace

void CAddressWait::Sleep(const Word& word, std::uint32_t seen, TimePoint deadline)
{
    static_assert(sizeof(Word) == sizeof(seen) && Word::is_always_lock_free);
    DWORD limitMs = INFINITE;
    if (deadline != withoutLimit)
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        limitMs = left.count() > 0 ? static_cast<DWORD>(left.count()) : 0;
    }
    WaitOnAddress(Address_Of(&word), &seen, sizeof(seen), limitMs);
}

void CAddressWait::WakeOne(const Word* word)
{
    WakeByAddressSingle(Address_Of(word));
}

void CAddressWait::WakeAll(const Word* word)
{
    WakeByAddressAll(Address_Of(word));
}

#else

#include <array>
#include <condition_variable>
#include <mutex>

namespace
{

struct SBucket
{
    std::mutex lock;
    std::condition_variable changed;
};

SBucket& Bucket_Of(const void* address)
{
    // Never destroyed: threads may sleep here when the process ends.
    static auto& buckets = *new std::array<SBucket, 64>();
    return buckets[reinterpret_cast<std::uintptr_t>(address) / 64 % buckets.size()];
}

} // namespace

void CAddressWait::Sleep(const Word& word, std::uint32_t seen, TimePoint deadline)
{
    SBucket& bucket = Bucket_Of(&word);
    std::unique_lock lock(bucket.lock);
    if (word.load() != seen)
    {
        return;
    }
    if (deadline == withoutLimit)
    {
        bucket.changed.wait(lock);
    }
    else
    {
        bucket.changed.wait_until(lock, deadline);
    }
}

// Other addresses may sleep in the same bucket, so one is not enough.
void CAddressWait::WakeOne(const Word* word)
{
    WakeAll(word);
}

void CAddressWait::WakeAll(const Word* word)
{
    SBucket& bucket = Bucket_Of(word);
    const std::lock_guard guard(bucket.lock);
    bucket.changed.notify_all();
}

#endif
