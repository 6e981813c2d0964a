// Worker threads that cannot be started, and hours that pass at once: failures of the system that a test asks for.
//
// A test executable that compiles ThreadFailure.cpp puts its own CreateThread and WaitForSingleObject in front of the
// thread library's, which every worker of the process then goes through. Nothing here fails unless asked to.
#pragma once

// While it lives, one creation of a worker thread fails as if the system had no thread left.
class CThreadFailure
{
public:
    // `nth`: which of the creations from now on fails, 1 = the next one, 0 = none. All others succeed.
    explicit CThreadFailure(int nth);
    ~CThreadFailure();
    CThreadFailure(const CThreadFailure&) = delete;
    CThreadFailure& operator=(const CThreadFailure&) = delete;

    // Creations asked for since this object came to be, the failed one included.
    int Creation_Count() const;

    // Those of them that brought a thread.
    int Started_Count() const;

    // Worker threads of the process that were started and have not ended.
    static int Running_Count();
};

// While it lives, waits for a thread's end that are limited to exactly an hour give up after 50 ms.
class CShortHour
{
public:
    CShortHour();
    ~CShortHour();
    CShortHour(const CShortHour&) = delete;
    CShortHour& operator=(const CShortHour&) = delete;
};
