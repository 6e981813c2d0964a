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

constexpr std::size_t stackBytes = 128 * 1024; // with a guard page

#ifdef SIMULATION_TSAN

// The sanitizer takes a stack that is used again for what it was before, but knows a new one.
using CStacks = boost::context::protected_fixedsize_stack;

#else

// Stacks that are kept for the next fiber.
class CStacks
{
public:
    explicit CStacks(std::size_t /*bytes*/) {}

    boost::context::stack_context allocate() // NOLINT(readability-identifier-naming): the library's name
    {
        if (Kept().empty())
        {
            return boost::context::protected_fixedsize_stack(stackBytes).allocate();
        }
        const auto stack = Kept().back();
        Kept().pop_back();
        return stack;
    }

    void deallocate(boost::context::stack_context& stack) // NOLINT(readability-identifier-naming)
    {
        Kept().push_back(stack);
    }

private:
    static std::vector<boost::context::stack_context>& Kept()
    {
        static auto& kept = *new std::vector<boost::context::stack_context>();
        return kept;
    }
};

#endif

class CFiberStrand : public CStrand
{
public:
    explicit CFiberStrand(std::function<void()> body)
        : m_body(std::move(body)),
          m_inside(std::allocator_arg, CStacks(stackBytes),
                   [this](boost::context::fiber&& outside)
                   {
                       m_outside = std::move(outside);
                       m_body();
                       m_sanitizer.Leave();
                       return std::move(m_outside);
                   })
    {
    }

    void Resume() override
    {
        m_sanitizer.Enter();
        m_inside = std::move(m_inside).resume();
    }

    void Yield() override
    {
        SExceptionState& state = ExceptionState_Get();
        const SExceptionState own = std::exchange(state, SExceptionState());
        m_sanitizer.Leave();
        m_outside = std::move(m_outside).resume();
        ExceptionState_Get() = own;
    }

private:
    std::function<void()> m_body;
    CSanitizerFiber m_sanitizer;
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
