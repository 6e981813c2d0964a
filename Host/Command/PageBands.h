// The bands of one page of an output, swath by swath, each held against the output's own board info before it is used:
// what preview and report read outputs through. Memory holds one band. One thread at a time.
#pragma once

#include "Host/Board/BoardReader.h"
#include "Host/Model/PageModel.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>

// Throws CInputError, which says the place, unless the band is as the model says: its swath, pass and sizes.
void Band_CheckAgainst(const CPageModel& model, const CBandData& band, const std::string& place);

class CPageBands
{
public:
    // `page`: its number as the band headers count; without one it is that of the first band. Throws CInputError: the
    // file cannot be read, is of version 1, or contradicts itself.
    CPageBands(const std::filesystem::path& output, std::optional<int> page);

    const CPageModel& Model() const { return *m_model; }
    const CBoardReader& Reader() const { return *m_reader; }

    // Whether the page has a band for this swath, which Band then is. Swaths are asked for in order. Throws CInputError
    // about damage, about a band that is not as the model says, and about swaths that are not in order.
    bool Swath_Read(int swath);
    const CBandData& Band() const { return m_band; }
    std::int64_t BandNo() const { return m_bandNo; } // its running number in the file

    // Reads to the end, so that the file has proved complete, and all its pages are known. Throws as Swath_Read does,
    // and if there is no such page.
    void Finish();

    int Page() const { return m_page.value_or(0); }
    const std::set<int>& Pages() const { return m_pages; } // so far
    std::int64_t BandCount() const { return m_bandCount; } // of the page, so far

private:
    bool Band_Next();

    std::unique_ptr<CBoardReader> m_reader;
    std::unique_ptr<CPageModel> m_model;
    std::optional<int> m_page;
    std::set<int> m_pages;
    std::int64_t m_bandCount = 0;
    std::int64_t m_bandNo = -1;
    CBandData m_band; // of the page, read last
    SBoardPass m_pass;
    bool m_bBand = false; // there is one
    bool m_bEnd = false;
};
