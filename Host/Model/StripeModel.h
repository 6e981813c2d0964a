// An independent model of the stripe bands: it walks along the carriage's path one scan position at a time and puts
// down the colour data byte by byte, without a formula for where a stripe begins. For tests of the ink-stripe stage.
#pragma once

#include <utility>
#include <vector>

struct SModelUnit
{
    int id = 0;
    int direction = 0;
    int position = 0;  // in the colour group
    int horizon_1 = 0; // offset in the right-to-left pass, in scan positions
    int horizon_2 = 0; // offset in the left-to-right pass
    bool bHasColor = true;
    std::vector<unsigned char> color; // the stripe's finished bytes
};

// What a job says of stripes, and the carriage that prints it.
struct SModelJob
{
    bool bByUnit = false;
    int bitsPerPixel = 1;
    int bandWidth = 16; // pixels
    int alignBytes = 1;
    int jobWidth = 0; // scan positions
    int maskCount = 1;
    int xMaxOffset_Right2Left = 0;
    int xMaxOffset_Left2Right = 0;
    int leftStripeWidth = 0;
    int rightStripeWidth = 0;
    int unitPitch = 0;
    int unitPositionCount = 1;
    std::vector<SModelUnit> units; // the cart's

    const SModelUnit& Unit_Get(int id) const;
};

struct SModelBand
{
    int unitIndex = 0;
    int unitDirection = 0;
    int bandAttr = 0;
    int width = 0; // pixels
    int bitsPerPixel = 1;
    int height = 0;
    int bytesPerLine = 0;
    std::vector<unsigned char> data;
};

class CStripeModel
{
public:
    explicit CStripeModel(SModelJob job) : m_job(std::move(job)) {}

    // Lines of every band of a step in this pass (1 = left to right).
    int LineCount(int bandAttr) const;
    int BytesPerLine() const;

    // The lines at which a unit's stripes begin.
    int Left_FirstLine(const SModelUnit& unit, int bandAttr) const;
    int Right_FirstLine(const SModelUnit& unit, int bandAttr) const;

    // Bytes from the later of the stripes' beginnings to the band's end, over both passes: what every colour band of
    // this unit may be long.
    int FreeRoom(const SModelUnit& unit) const;

    // The stripe band of one unit. What does not fit throws std::out_of_range.
    SModelBand Band_Make(int unitId, int bandAttr) const;

    // The units that get a stripe band in a step with bands of these units, in order.
    std::vector<int> RestUnits(const std::vector<int>& inputUnits) const;

private:
    int Offset(int bandAttr) const;
    void Stripe_Put(SModelBand& band, int firstLine, const SModelUnit& unit) const;

    SModelJob m_job;
};
