// The print parameters of the process: set by the host before a job, read by every stage.
//
// Any number of threads may read at any time. What the accessors return by value is theirs; references and pointers
// into the parameters stay valid until the next Set, so a host sets them between jobs, not during one.
#pragma once

#include "Platform/PlatformExport.h"
#include "Platform/PrintParam/PrintParamRecords.h"

#include <mutex>

class PLATFORM_API CPrintParamGlobal
{
public:
    // Replaces all parameters.
    void Set(const SPrintParam& param);

    SRipJobInfo JobInfo_Get() const;          // the job as ripped
    SRipJobInfo JobInfo_CurPrint_Get() const; // the job as it is being printed
    int CurPrint_JobWidth_Get() const;        // scan positions
    EDotSizeMode DotSizeMode_Get() const;
    int AlignByteCountPerLine() const; // bytes
    const SMaskData& MaskData_Ref() const;
    SInkStripeParam_Pixel InkStripeParam_Get() const;
    const CBandData* InkStripeColorData_Get(int unitId) const; // null if the unit has none; not the caller's
    const CUnitInfo_Horizon& UnitInfo_Horizon() const;

private:
    mutable std::mutex m_lock;
    SPrintParam m_param;
};

// The process's print parameters; never null, never deleted.
PLATFORM_API CPrintParamGlobal* DPD_PrintParam();
