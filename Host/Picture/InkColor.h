// Which colour stands for an ink on a screen: the usual inks by their names, any other by a colour of its own that is
// derived from its name, so that it is the same in every picture. Colours are 0xRRGGBB. Pure functions; any thread.
#pragma once

#include "Host/Board/BoardInfo.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// "#00aeef".
std::string Color_Text(std::uint32_t color);

// The inverse, in any case of letters, with or without the "#". Nothing if it is none.
std::optional<std::uint32_t> Color_Parse(std::string_view text);

// The colour of a usual ink that the name mentions: "Cyan", "cyan left", "page.Light_Magenta.tif". The longest mention
// counts, of equal ones the first. Names of up to three letters ("LK", "red") must be all that is said, but for the
// ending of a file. Nothing if there is none.
std::optional<std::uint32_t> InkColor_Find(std::string_view name);

// A colour that the user gave an ink.
struct SInkChoice
{
    std::string m_ink; // a unit's name or its separation, in any case of letters
    std::uint32_t m_color = 0;
};

// From "NAME=#RRGGBB". Throws CInputError if it is none.
SInkChoice InkChoice_Parse(const std::string& text);

// The colour of each unit, in the info's order: a given one, else by the unit's name, else by its separation's, else
// derived. Throws CInputError if no unit has an ink that a colour was given for.
std::vector<std::uint32_t> InkColors_Choose(const SBoardInfo& info, const std::vector<SInkChoice>& choices);
