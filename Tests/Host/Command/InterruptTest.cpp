// Interrupts as a flag: signals, and what a system does when the terminal is closed.
#include "Host/Interrupt.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <thread>

#if defined(_WIN32)
#include "Tests/Support/ImportTable.h"
#endif

namespace
{

// Signals mean what they mean by themselves, also where the tests were started to ignore them.
class CInterruptTest : public testing::Test
{
protected:
    void SetUp() override
    {
        std::signal(SIGINT, SIG_DFL);
        std::signal(SIGTERM, SIG_DFL);
#if !defined(_WIN32)
        std::signal(SIGHUP, SIG_DFL);
#endif
    }
};

} // namespace

TEST_F(CInterruptTest, ASignalSetsTheFlagUntilTheNextOneBegins)
{
    for (const int signalNumber : {SIGINT, SIGTERM})
    {
        const CInterrupt interrupt(130, "ended\n");
        EXPECT_FALSE(CInterrupt::IsRequested());
        std::raise(signalNumber);
        EXPECT_TRUE(CInterrupt::IsRequested());
    }
    const CInterrupt next(130, "ended\n");
    EXPECT_FALSE(CInterrupt::IsRequested());
}

#if defined(_WIN32)

namespace
{

PHANDLER_ROUTINE g_pHandler = nullptr;

BOOL WINAPI Handler_Keep(PHANDLER_ROUTINE handler, BOOL bAdd)
{
    g_pHandler = bAdd != 0 ? handler : nullptr;
    return TRUE;
}

} // namespace

// The system would call the handler on a thread of its own.
TEST_F(CInterruptTest, ABreakSetsTheFlagAndTheSecondOneIsLeftToTheSystem)
{
    const CImportTable platform("ControllerPlatform.dll");
    const auto former = platform.Replace("SetConsoleCtrlHandler", &Handler_Keep);
    {
        const CInterrupt interrupt(130, "ended\n");
        ASSERT_NE(g_pHandler, nullptr);
        EXPECT_EQ(g_pHandler(CTRL_C_EVENT), FALSE); // a signal of the C library
        EXPECT_FALSE(CInterrupt::IsRequested());
        EXPECT_EQ(g_pHandler(CTRL_BREAK_EVENT), TRUE);
        EXPECT_TRUE(CInterrupt::IsRequested());
        EXPECT_EQ(g_pHandler(CTRL_BREAK_EVENT), FALSE);
    }
    EXPECT_EQ(g_pHandler, nullptr);
    platform.Replace("SetConsoleCtrlHandler", former);
}

#else

TEST_F(CInterruptTest, AClosedTerminalSetsTheFlag)
{
    const CInterrupt interrupt(130, "ended\n");
    std::raise(SIGHUP);
    EXPECT_TRUE(CInterrupt::IsRequested());
}

using CInterruptDeathTest = CInterruptTest;

// Whatever it is doing: the status and the text are those that it gave.
TEST_F(CInterruptDeathTest, AProcessThatDoesNotWindDownEndsAfterASecond)
{
    const auto interruptOnce = []
    {
        const CInterrupt interrupt(130, "ended in the end\n");
        std::raise(SIGINT);
        std::this_thread::sleep_for(std::chrono::seconds(20));
    };
    EXPECT_EXIT(interruptOnce(), testing::ExitedWithCode(130), "ended in the end");
}

TEST_F(CInterruptDeathTest, ASecondOneEndsTheProcess)
{
    for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP})
    {
        const auto interruptTwice = [signalNumber]
        {
            const CInterrupt interrupt(130, "ended\n");
            std::raise(signalNumber);
            std::raise(signalNumber);
        };
        EXPECT_EXIT(interruptTwice(), testing::KilledBySignal(signalNumber), "");
    }
}

#endif
