// A board line as a picture, whatever kind of picture it is: a row for each frame, or part of a wide one; a cell for
// each bit, in its unit's colour and with its nozzle's number. Any thread.
#pragma once

#include "Host/Command/Layout.h"
#include "Host/Picture/Picture.h"

#include <functional>
#include <memory>

using PictureMaker = std::function<std::unique_ptr<CPicture>(const SPictureFrame&)>;

// Draws the frames from `firstFrame` on, `frameCount` of them at most. Throws what the picture throws.
void Layout_Draw(const SLayout& layout, std::int64_t firstFrame, std::int64_t frameCount, const PictureMaker& make);
