// Colours for the few words on a terminal that a person must not miss: errors and warnings on standard error. Nothing
// else of boardmap is coloured. Any thread.
#pragma once

#include <string>

enum class EColour
{
    Error,   // red
    Warning, // yellow
};

// The text in its colour where standard error is a terminal that shows colours; as it is elsewhere, with TERM=dumb, and
// where the environment says NO_COLOR (https://no-color.org), anything but empty. What comes from outside must have
// been made harmless before (Text_Shown).
std::string Colour_OfErrors(const std::string& text, EColour colour);
