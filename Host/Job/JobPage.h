// An opened job: its pages' separations, all looked at and checked, and the sizes that follow. What every command that
// looks at a job begins with. Nothing runs, the configuration is not set, and no band's memory is taken; that is the
// conversion's business. No file stays open but those of the first page. Made on the main thread, then only read.
#pragma once

#include "Host/Board/BoardInfo.h"
#include "Host/Input/SeparationReader.h"
#include "Host/Job/Job.h"
#include "Host/Job/JobCheck.h"
#include "Host/Job/JobGeometry.h"
#include "Host/Mistake.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

// A unit that prints the job's pages.
struct SPageUnit
{
    const SJobUnit* m_pUnit = nullptr; // of the page's job
    std::vector<bool> m_printed;       // by page: it has a separation; else the page is blank for it
};

class CJobPage
{
public:
    // Reads the job file and opens its separations. Adds every mistake of both to `mistakes`; HasPage then tells how
    // far it came.
    CJobPage(std::filesystem::path file, CMistakeList& mistakes);

    // For who needs a page without mistakes: throws CInputError with all of them. Warnings are kept for Warnings_Get.
    explicit CJobPage(std::filesystem::path file);

    CJobPage(const CJobPage&) = delete;
    CJobPage& operator=(const CJobPage&) = delete;

    // The job could be read, if with mistakes; else Job() says nothing.
    bool HasJob() const { return m_bJob; }

    // No mistakes: everything below can be relied on.
    bool HasPage() const { return m_bPage; }

    const SJob& Job() const { return m_job; }
    const std::filesystem::path& JobFile() const { return m_file; }
    const std::vector<SMistake>& Warnings_Get() const { return m_warnings; }

    int Width() const { return m_page.width; }
    int Height() const { return m_page.height; }
    const SSeparationInfo& PageInfo() const { return m_page; } // of the first separation
    int PageCount() const { return m_job.m_pages.m_count; }    // pages of the job, all of this size
    std::int64_t StepCount() const { return m_geometry.m_swathCount * PageCount(); } // swaths of all pages
    const SJobGeometry& Geometry() const { return m_geometry; }

    // The units that have a separation, in the job's order.
    const std::vector<SPageUnit>& Units() const { return m_units; }

    // The separation of a unit of Units() on a page; null if the page is blank for it. Throws CInputError, which says
    // what is wrong and not where, if it cannot be read or is not what it was when the page was opened. Any thread.
    std::unique_ptr<CSeparationReader> Reader_Open(const SPageUnit& unit, int page) const;

private:
    void Open(CMistakeList& mistakes);
    void Unit_Open(const SJobUnit& unit, std::vector<SUnitSeparation>& found, CMistakeList& mistakes);
    void Presence_Check(CMistakeList& mistakes) const;

    std::filesystem::path m_file;
    SJob m_job;
    bool m_bJob = false;
    bool m_bPage = false;
    SSeparationInfo m_page;
    SJobGeometry m_geometry;
    std::vector<SPageUnit> m_units;
    std::vector<SMistake> m_warnings;
};

// What an output of a checked job says of itself, for a page of this size and resolution.
SBoardInfo Job_BoardInfo(const SJob& job, const SSeparationInfo& page, const std::string& generator);

// What an output of this page says of itself. `generator` names the program and its version. The page must be whole.
SBoardInfo Page_BoardInfo(const CJobPage& page, const std::string& generator);
