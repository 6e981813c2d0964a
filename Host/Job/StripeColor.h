// What the units' ink stripes hold, as the ink-stripe stage copies it: solid, or read from small TIFF files. Job
// validation and Job_Apply call this on the main thread, before a stage is made.
#pragma once

#include "Host/Job/Job.h"
#include "Platform/BandData/BandData.h"

#include <map>
#include <memory>

// The pixel that a solid stripe of a job with 1 or 2 bits per pixel consists of: Small 01, Middle 10, Big 11. Small,
// Middle and Big are for 2 bits only; Job_Check refuses them for 1.
int StripeFill_Code(EStripeFill fill, int bitsPerPixel);

// Scan positions of a unit's stripes: StripeLength, or the rows of its TIFF file, whose header this reads. Throws
// CInputError for a file that is no such TIFF, has another depth than the job, another width than the nozzles, or more
// rows than StripeLength.
int StripeColor_Length(const SJob& job, const SJobUnit& unit);

// The colour band of every unit that gets stripes, by unit id: the finished lines of a stripe, each as long as a line
// of the stripe bands. By unit, every scan position of a 2-bit job is two lines, the high bits and then the low bits.
// Units of one colour share a band. Throws CInputError as StripeColor_Length does, and for damaged pixels.
std::map<int, std::shared_ptr<const CBandData>> Job_StripeColors(const SJob& job);
