// Threads that cannot be started, and hours that pass at once, on the plain edition: it has hooks for both.
#include "Tests/Support/ThreadFailure.h"

#include "PlainHook.h"

CThreadFailure::CThreadFailure(int nth)
{
    SPlainHook::creationCount = 0;
    SPlainHook::startedCount = 0;
    SPlainHook::failingCreation = nth;
}

CThreadFailure::~CThreadFailure()
{
    SPlainHook::failingCreation = 0;
}

int CThreadFailure::Creation_Count() const
{
    return SPlainHook::creationCount;
}

int CThreadFailure::Started_Count() const
{
    return SPlainHook::startedCount;
}

int CThreadFailure::Running_Count()
{
    return SPlainHook::runningCount;
}

CShortHour::CShortHour()
{
    SPlainHook::bShortHour = true;
}

CShortHour::~CShortHour()
{
    SPlainHook::bShortHour = false;
}
