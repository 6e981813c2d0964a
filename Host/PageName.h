// Names of files with a place for a page's number, as Ghostscript's -sOutputFile takes them: "page%d(Cyan).tif" and
// "page-%04d.Cyan.tif" are a name for every page, "%%" is a percent sign. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

// What is wrong with the pattern, and what would be right, as one sentence; nothing if it is one. A pattern has one
// place for the number, or none.
std::optional<std::string> PagePattern_Fault(const std::string& pattern);

// Whether it has a place for the number. The pattern is right.
bool PagePattern_HasNumber(const std::string& pattern);

// The name of the page with this number, at least 0. The pattern is right.
std::string PageName_Make(const std::string& pattern, std::int64_t number);

// The pattern that makes the text itself: every percent sign doubled.
std::string PagePattern_Of(const std::string& text);
