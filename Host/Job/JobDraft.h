// A first job for separations that are there: which ink each of them is by its name, which options bring a map style
// about, and the text of a job file with a comment for every choice. Pure functions; any thread.
#pragma once

#include "Host/Input/SeparationInfo.h"
#include "Host/Job/MapClass.h"

#include <optional>
#include <string>
#include <vector>

struct SDraftFile
{
    std::string m_file; // as the job will name it, UTF-8
    std::string m_ink;  // may be empty
    SSeparationInfo m_info;
};

// The pages of a job that is drafted for several.
struct SDraftPages
{
    int m_first = 1;
    int m_last = 1;
    bool m_bMissing = false; // a page lacks the file of an ink

    int Count() const { return m_last - m_first + 1; }
};

struct SDraftOptions
{
    EMapClass m_map = EMapClass::Map_5;
    int m_nozzles = 400;
    bool m_bBidirectional = true;
    std::optional<SDraftPages> m_pages; // the files' names are patterns then
};

// The inks that the names of a page's separations tell, in their order: "Cyan" of "page1(Cyan).tif", else what the name
// has behind that with which all of them begin: "Cyan" of "page.Cyan.tif" beside "page.Black.tif". A page of one
// separation has what is behind the last dot, if anything. Names without folders, UTF-8.
std::vector<std::string> Inks_FromNames(const std::vector<std::string>& names);

// What the names of several pages' separations have in common: a pattern for each ink ("page%d(Cyan).tif"), in the
// order in which they come first, and for each a file that is one of its pages.
struct SPageNames
{
    SDraftPages m_pages;
    std::vector<std::string> m_patterns;
    std::vector<std::size_t> m_files; // places in the list of names
};

// The pages that the names tell by a number before the ink, outside of the last brackets; nothing for names of one
// page. Names may have folders. Throws CInputError if a page has no file at all, or the numbers are not written in one
// way.
std::optional<SPageNames> Pages_FromNames(const std::vector<std::string>& names);

// The place of an ink on a carriage: 0 to 3 for cyan, magenta, yellow and black, by name or letter, else 4.
int Ink_Order(const std::string& ink);

// What brings this map about for separations of `bitsPerPixel` bits; nothing if it does not take them.
std::optional<SDPOption> Map_Options(EMapClass mapClass, int bitsPerPixel);

// Whether anything looks at PrinterSupportBits.
bool SupportBits_IsUsed(const SDPOption& option);

// The smallest frame width with room for so many units; nothing if there is none.
std::optional<int> Map_FrameWidth(const SJobMap& map, int unitCount);

// The text of the job. The files must be of one size and depth and at least one. Throws CInputError, which names the
// style, if it cannot take them.
std::string JobDraft_Make(const SDraftOptions& options, const std::vector<SDraftFile>& files);
