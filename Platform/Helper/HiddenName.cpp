// Names, and the places where a signal handler finds those in use.
#include "Platform/Helper/HiddenName.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <random>
#include <utility>

namespace
{

constexpr std::size_t digitCount = 16;
constexpr std::string_view hexDigits = "0123456789abcdef";

constexpr std::size_t slotCount = 8;
constexpr std::size_t longestPath = 4096;
struct SSlot
{
    std::atomic<int> m_state{0}; // 0: free, 1: being written, 2: there
    std::array<CHiddenName::Character, longestPath> m_path = {};
};
std::array<SSlot, slotCount> g_slots;
static_assert(std::atomic<int>::is_always_lock_free, "they are read inside a signal handler");

bool IsHexDigit(CHiddenName::Character character)
{
    return std::any_of(hexDigits.begin(), hexDigits.end(), [=](char digit) { return character == digit; });
}

} // namespace

// A name that is nearly as long as a name may be leaves no room for another part.
CHiddenName::Text CHiddenName::Stem_Of(const std::filesystem::path& target)
{
    constexpr std::size_t longestName = 200;
    std::filesystem::path stem = ".";
    stem += target.filename().native().size() <= longestName ? target.filename() : std::filesystem::path("boards");
    stem += ".part-";
    return stem.native();
}

bool CHiddenName::IsOne(TextView name, const Text& stem)
{
    return name.size() == stem.size() + digitCount && name.starts_with(stem) &&
           std::all_of(name.begin() + static_cast<std::ptrdiff_t>(stem.size()), name.end(), &IsHexDigit);
}

std::filesystem::path CHiddenName::Make(const std::filesystem::path& target)
{
    std::random_device device;
    std::uniform_int_distribution<std::size_t> choice(0, hexDigits.size() - 1);
    Text name = Stem_Of(target);
    for (std::size_t i = 0; i < digitCount; ++i)
    {
        name += static_cast<Character>(hexDigits[choice(device)]);
    }
    return target.parent_path() / name;
}

void CHiddenName::ForEach(void (*action)(const Character* pPath))
{
    for (const SSlot& slot : g_slots)
    {
        if (slot.m_state == 2)
        {
            action(slot.m_path.data());
        }
    }
}

void CHiddenName::Set(std::filesystem::path path)
{
    Forget();
    m_path = std::move(path);
    const Text& text = m_path.native();
    for (std::size_t i = 0; i < slotCount && text.size() < longestPath; ++i)
    {
        int freeState = 0;
        if (g_slots[i].m_state.compare_exchange_strong(freeState, 1))
        {
            std::copy_n(text.c_str(), text.size() + 1, g_slots[i].m_path.data());
            g_slots[i].m_state = 2;
            m_slot = static_cast<int>(i);
            return;
        }
    }
}

void CHiddenName::Forget()
{
    if (m_slot >= 0)
    {
        g_slots[static_cast<std::size_t>(m_slot)].m_state = 0;
    }
    m_slot = -1;
    m_path.clear();
}
