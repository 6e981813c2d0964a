// Text for a person's terminal. File names, jobs and board files come from anywhere: what they say must not move the
// cursor, change its colours or turn the reading direction of the sentence around it. Pure functions; any thread.
#pragma once

#include <string>
#include <string_view>

// The text with every character that shows nothing by itself written as \uNNNN, as in TOML, and bytes that are no UTF-8
// as \xNN: control characters but for line breaks and tabs, marks and overrides of the reading direction,
// separators of lines and paragraphs, characters without width.
std::string Text_Shown(std::string_view text);

// The same for what must stay on its line, for example a file's name: line breaks and tabs, too.
std::string Name_Shown(std::string_view name);

bool Text_IsUtf8(std::string_view text);

// A name or a value from a file: Name_Shown, cut off with "..." where it is longer than a line.
std::string Text_Printable(std::string_view text);
