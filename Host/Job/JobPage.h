// An opened page: a job, a reader for each of its separations, and the sizes that follow, all checked. What every
// command that looks at a job begins with. Nothing runs, the configuration is not set, and no band's memory is taken;
// that is the conversion's business. Made and used on the main thread.
#pragma once

#include "Host/Board/BoardInfo.h"
#include "Host/Input/SeparationReader.h"
#include "Host/Job/Job.h"
#include "Host/Job/JobGeometry.h"
#include "Host/Mistake.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

// A unit that prints the page.
struct SPageUnit
{
    const SJobUnit* m_pUnit = nullptr;           // of the page's job
    std::unique_ptr<CSeparationReader> m_reader; // null if the separation could not be opened, or once it is taken
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
    const SJobGeometry& Geometry() const { return m_geometry; }

    // The units that have a separation, in the job's order.
    std::vector<SPageUnit>& Units() { return m_units; }
    const std::vector<SPageUnit>& Units() const { return m_units; }

private:
    void Open(CMistakeList& mistakes);

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
