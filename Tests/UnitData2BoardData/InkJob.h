// Whole jobs for the stages that convert through the band converter: the bands of every step, the board bands that the
// checked twin and the stripe model place for them, and the ways to run a job on a stage's own thread.
#pragma once

#include "Host/Model/BoardTwin.h"
#include "Tests/Support/BandHeader.h"
#include "Tests/UnitData2BoardData/InkSupport.h"

#include <memory>
#include <random>
#include <vector>

// A band by its content; the same one can be made any number of times.
struct SBandImage
{
    STestBandHeader header;
    int width = 0;
    int height = 0;
    int bitsPerPixel = 1;
    int bytesPerLine = 0;
    std::vector<unsigned char> data;

    bool operator==(const SBandImage&) const = default;
};

using SStepImage = std::vector<SBandImage>; // a step's bands, in the order of the inputs

struct SInkJob
{
    SModelJob stripes;
    SOptionSetup option; // the push style is the stripes'
    EDotSizeMode dotSizeMode = SDotSize::Small;
    int jobBits = 1; // bits per pixel of the job as ripped
    int lineGeneratorCount = 1;
    STwinStyle twin;
    std::vector<SStepImage> steps;
};

void Job_Configure(CConfigGuard& config, const SInkJob& job);

// A band's content, and a band of that content: a new one, or one that is made over.
SBandImage Image_Of(const CBandData& band);
void Band_Fill(CBandData& band, const SBandImage& image, int alignBytes);
std::unique_ptr<CBandData> Band_Of(const SBandImage& image, int alignBytes);

// A band of noise for one unit, as large as the job's steps in this pass; bits beyond the width are 0.
SBandImage Band_Noise(const SInkJob& job, std::mt19937& random, int unitIndex, int bandAttr);

// The board band that step `number` must give.
SBandImage Board_Expected(const SInkJob& job, int number);

// Run all steps, with a producer beside the stage, and return the board bands. The first two need steps with equally
// many bands.
std::vector<SBandImage> Job_Run(CUnitData2BoardData_Base& stage, const SInkJob& job);
std::vector<SBandImage> Job_Run(CUnitData2BoardData_AllUnit_2& stage, const SInkJob& job);
