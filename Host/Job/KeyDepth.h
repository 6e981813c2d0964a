// How deep the keys of a TOML text nest tables, before anything is parsed: the parser and its trees go one function
// call deeper for each part of a dotted key, and a key of a few kilobytes would take all of the stack. Pure function;
// any thread.
#pragma once

#include "Host/Mistake.h"

#include <optional>
#include <string_view>

// Where a key or a table's header begins that has more than `most` parts; nothing if there is none. What is no TOML is
// looked through as far as it goes.
std::optional<SFilePlace> KeyDepth_Find(std::string_view text, int most);
