// What becomes of board bands at the end of the road. The command's output thread hands every band of the stage's
// output FIFO to one writer, in their order; when the thread has ended, the main thread completes it.
#pragma once

#include "Platform/BandData/BandData.h"

#include <cstdint>

// Nothing appears under the target's name before Finish; a writer that is destroyed without it leaves no trace, and a
// file that was there before stays as it was.
class CBoardWriter
{
public:
    CBoardWriter() = default;
    virtual ~CBoardWriter() = default;
    CBoardWriter(const CBoardWriter&) = delete;
    CBoardWriter& operator=(const CBoardWriter&) = delete;

    // Appends the band; it stays the caller's. Throws CRunError; the writer is then of no more use.
    void Band_Write(const CBandData& band);

    // Completes the output. Throws CRunError. Once, as the last call.
    void Finish();

    // Bands written so far.
    std::int64_t BandCount() const { return m_bandCount; }

protected:
    virtual void Band_WriteNext(const CBandData& band) = 0;
    virtual void Finish_All() = 0;

private:
    void State_CheckOpen() const;

    bool m_bOpen = true; // false: finished, or a call failed
    std::int64_t m_bandCount = 0;
};
