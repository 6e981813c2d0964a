// Fibers of Boost.Context, and system threads that hand a baton on.
#include "Strand.h"

#include "SanitizerFiber.h"

#include <boost/context/fiber.hpp>
#include <boost/context/protected_fixedsize_stack.hpp>

#include <cxxabi.h>
#include <semaphore>
#include <thread>
#include <utility>
#include <vector>

namespace
{

// What the C++ runtime knows of a thread's exceptions, as its interface lays down: those that are being handled, and
// how many are on their way. All fibers share one system thread's.
struct SExceptionState
{
    void* caught = nullptr;
    unsigned onTheirWay = 0;
};

SExceptionState& ExceptionState_Get()
{
    return *reinterpret_cast<SExceptionState*>(abi::__cxa_get_globals());
}

// With a guard page. AddressSanitizer puts room between a frame's variables.
#ifdef SIMULATION_ASAN
constexpr std::size_t stackBytes = 512 * 1024;
#else
constexpr std::size_t stackBytes = 128 * 1024;
#endif

// ThreadSanitizer takes a stack that is used again for what it was before, but knows a new one.
#ifdef SIMULATION_TSAN
constexpr bool bStacksAreKept = false;
#else
constexpr bool bStacksAreKept = true;
#endif

// Stacks that are kept for the next fiber. The one that a fiber was given is noted in `taken`.
class CStacks
{
public:
    explicit CStacks(boost::context::stack_context& taken) : m_taken(taken) {}

    boost::context::stack_context allocate() // NOLINT(readability-identifier-naming): the library's name
    {
        if (Kept().empty())
        {
            m_taken = boost::context::protected_fixedsize_stack(stackBytes).allocate();
        }
        else
        {
            m_taken = Kept().back();
            Kept().pop_back();
        }
        return m_taken;
    }

    void deallocate(boost::context::stack_context& stack) // NOLINT(readability-identifier-naming)
    {
        if (bStacksAreKept)
        {
            Kept().push_back(stack);
        }
        else
        {
            boost::context::protected_fixedsize_stack(stackBytes).deallocate(stack);
        }
    }

private:
    static std::vector<boost::context::stack_context>& Kept()
    {
        static auto& kept = *new std::vector<boost::context::stack_context>();
        return kept;
    }

    boost::context::stack_context& m_taken;
};

class CFiberStrand : public CStrand
{
public:
    explicit CFiberStrand(std::function<void()> body)
        : m_body(std::move(body)),
          m_inside(std::allocator_arg, CStacks(m_stack),
                   [this](boost::context::fiber&& outside)
                   {
                       m_sanitizer.Entered();
                       m_outside = std::move(outside);
                       m_body();
                       m_sanitizer.Leave(true);
                       return std::move(m_outside);
                   })
    {
    }

    void Resume() override
    {
        m_sanitizer.Enter(static_cast<const char*>(m_stack.sp) - m_stack.size, m_stack.size);
        m_inside = std::move(m_inside).resume();
        m_sanitizer.Left();
    }

    void Yield() override
    {
        SExceptionState& state = ExceptionState_Get();
        const SExceptionState own = std::exchange(state, SExceptionState());
        m_sanitizer.Leave(false);
        m_outside = std::move(m_outside).resume();
        m_sanitizer.Entered();
        ExceptionState_Get() = own;
    }

private:
    std::function<void()> m_body;
    CSanitizerFiber m_sanitizer;
    boost::context::stack_context m_stack; // of the inside
    boost::context::fiber m_outside;
    boost::context::fiber m_inside;
};

class CThreadStrand : public CStrand
{
public:
    explicit CThreadStrand(std::function<void()> body)
        : m_thread(
              [this, body = std::move(body)]
              {
                  m_inside.acquire();
                  body();
                  m_outside.release();
              })
    {
    }
    CThreadStrand(const CThreadStrand&) = delete;
    CThreadStrand& operator=(const CThreadStrand&) = delete;
    ~CThreadStrand() override { m_thread.join(); }

    void Resume() override
    {
        m_inside.release();
        m_outside.acquire();
    }

    void Yield() override
    {
        m_outside.release();
        m_inside.acquire();
    }

private:
    std::binary_semaphore m_inside{0}; // whose turn it is
    std::binary_semaphore m_outside{0};
    std::thread m_thread;
};

} // namespace

std::unique_ptr<CStrand> Strand_Make(EStrand kind, std::function<void()> body)
{
    if (kind == EStrand::Thread)
    {
        return std::make_unique<CThreadStrand>(std::move(body));
    }
    return std::make_unique<CFiberStrand>(std::move(body));
}
