// The ink-stripe stage: maps all units of a step at once, and adds stripes for those that have nothing to print.
//
// An ink stripe is a short run of colour data beside the job, left and right of it, that keeps a unit's nozzles firing.
// For every cart unit without a band in the step (a rest unit) the stage makes a band that holds nothing but the unit's
// two stripes, and maps it like any other. The lines of a board band are mapped by a band converter with several
// threads, while the stage's own thread waits.
//
// Real bands must have the size of the stripe bands: O + W + S scan positions, where O is the pass's largest horizontal
// offset, W the job's width divided by the masks, and S the two stripe zones; each position is one line, or as many
// 1-bit lines as a pixel has bits when data is pushed by unit. Neither that nor the stripes' places are checked here.
#pragma once

#include "UnitData2BoardData/UnitData2BoardData_Base.h"

#include <vector>

class CColorGroupInfo;
struct SInkStripeParam_Run;

class DATAMAPPING_API CUnitData2BoardData_S_AllUnit : public CUnitData2BoardData_Base
{
public:
    CUnitData2BoardData_S_AllUnit();
    // Member-wise: a copy shares every owned object with the original. Nothing in the library copies a stage.
    CUnitData2BoardData_S_AllUnit(const CUnitData2BoardData_S_AllUnit& other);
    CUnitData2BoardData_S_AllUnit& operator=(const CUnitData2BoardData_S_AllUnit& other);
    ~CUnitData2BoardData_S_AllUnit() override;

    bool Create(bool checkInput, const std::vector<CBandDataFIFO*>& inputFIFOs) override;

protected:
    void Finally() override;
    bool Initialize() override;

    // Makes the stripe bands of the step, appends them to the inputs, and then the board band.
    bool AllocateOutputBuffer() override;

    // Deals a line of 400 pixels in four chunks of 100 to four board units, by the cart unit's direction. Not part of
    // this stage's own flow, which hands whole bands to the converter.
    bool MapBandData_Line_OneInput(int line, const CBandData& input) override;

    // Hands the band to a band converter and waits for it, up to an hour.
    bool GenerateBandData() override;

    // Three bands for every mask.
    int OutputBufferCount_Get() override;

    SInkStripeParam_Run* m_pInkStripeParam = nullptr;   // owned; made by the first output allocation
    const CColorGroupInfo* m_pColorGroupInfo = nullptr; // the configuration's

private:
    bool Init_Param();
    bool InkStripeBands_Append();
    // Make a board band of one frame per pixel, whatever the map says. Nobody calls them.
    bool AllocateOutputBuffer_ByUnit();
    bool AllocateOutputBuffer_ByPixel();
    bool AllocateOutputBuffer_ByFrame();

    bool RestUnitIdList_Get(std::vector<int>& ids);

    // Makes the stripe band of one unit. On failure the band, if there is one, stays in `band` for the caller to
    // delete.
    bool InkStripeUnitData_Generate(CBandData*& band, int unitId);
    bool InkStripeUnitData_Generate_ByUnit(CBandData*& band, int unitId);
    bool InkStripeUnitData_Generate_ByPixel(CBandData*& band, int unitId);

    // Write one stripe into a stripe band.
    bool AddInkStripe_Left_ByUnit(CBandData& band);
    bool AddInkStripe_Right_ByUnit(CBandData& band);
    bool AddInkStripe_Left_ByPixel(CBandData& band);
    bool AddInkStripe_Right_ByPixel(CBandData& band);

    // What the two push styles share: they differ in the lines of a scan position and the bits of a line's pixels. The
    // operations above write the log records.
    bool InkStripeBand_Make(CBandData*& band, int unitId, int linesPerPosition, int bitsPerPixel);
    bool AddInkStripe_Left(CBandData& band, int linesPerPosition);
    bool AddInkStripe_Right(CBandData& band, int linesPerPosition);

    // ORs the board bytes of `bitCount` source bits from bit `srcBitOffset` on into `dst`, for one board unit. Always
    // true; `dstByteCount` is not looked at.
    bool MapBandData_Buffer(int unitIndex, const unsigned char* src, int srcBitOffset, int bitCount, unsigned char* dst,
                            int dstByteCount);

    friend struct SStageTestAccess;
};
