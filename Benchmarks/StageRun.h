// A stage that runs: the ink-stripe stage with a producer that gives filled bands as fast as the stage takes them, on
// whichever edition of the platform the program is built for.
#pragma once

#include "PlatformEnds.h" // of the edition
#include "UnitData2BoardData/UnitData2BoardData_S_AllUnit.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

struct SStageCase
{
    int units = 16;  // with a band of their own
    int stripes = 0; // more units, which print stripes
    int generators = 2;
    int nozzles = 400;
    int lines = 35'000;
    int frame = 16;   // bits
    int inFlight = 3; // bands of every unit
    int bits = 1;     // per pixel
    std::string pattern = "noise";
    std::string kernel; // of the data maps; empty: the one that the library chose

    // The case as options of a program that measures it, and back: "--units 16 --stripes 0 ...".
    std::string Options() const;
    void Option_Set(const std::string& name, const std::string& value);
};

// Has the maps use the named kernel for as long as it lives.
class CKernelInUse
{
public:
    explicit CKernelInUse(const std::string& name);
    ~CKernelInUse();
    CKernelInUse(const CKernelInUse&) = delete;
    CKernelInUse& operator=(const CKernelInUse&) = delete;

private:
    std::string m_before;
};

// The stage with its inputs and its producer.
class CStageRun
{
public:
    explicit CStageRun(const SStageCase& one);
    ~CStageRun();
    CStageRun(const CStageRun&) = delete;
    CStageRun& operator=(const CStageRun&) = delete;

    // Lets `count` steps go; the seconds between their board bands, of which there is one less.
    std::vector<double> Bands_Take(int count);

    // Bytes of a board band; 0 before the first one was taken.
    int BoardBytes() const { return m_boardBytes; }

private:
    void Bands_Give();

    std::vector<std::unique_ptr<CTestPool>> m_fifos;
    CUnitData2BoardData_S_AllUnit m_stage;
    std::thread m_producer;
    std::atomic<bool> m_bEnd{false};
    std::atomic<int> m_allowed{0};
    int m_given = 0; // the producer's
    int m_boardBytes = 0;
};
