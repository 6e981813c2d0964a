// A job as its file describes it, checked. Made on the main thread before anything else of a command, then only read.
// The file's keys are explained in Docs/job-file.md.
#pragma once

#include "Host/Job/MapClass.h"
#include "Host/Mistake.h"
#include "Platform/PrintParam/PrintParamRecords.h"

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

// The conversion stage that runs the job.
enum class EStageKind
{
    InkStripe, // all units at once, with ink stripes for the units that print nothing
    Base,      // one line after the other, table maps only
    OneFIFO,   // the ink-stripe stage, fed with whole sets of bands
};

// A place in the job file.
using SJobPlace = SFilePlace;

// A solid ink stripe, by the drop that all its pixels print with.
enum class EStripeFill
{
    None,
    Small,
    Middle,
    Big,
    Full, // the most that the job's depth has
};

// What the ink stripes of one unit hold: the same in both zones and both passes.
struct SJobStripeColor
{
    std::string m_text;                // as the job file gives it, UTF-8; empty: the unit has none
    std::optional<EStripeFill> m_fill; // a solid stripe
    std::filesystem::path m_path;      // else a TIFF of nozzles x scan positions, found from the job file's folder
    SJobPlace m_place;

    bool IsGiven() const { return !m_text.empty(); }
};

// How the job names the separations of its pages.
enum class EPageNames
{
    Single,  // one page: Separation is the file's name
    Pattern, // Separation has a place for the page's number
    List,    // Separations has a name for each page
};

// The pages of the job, which the carriage prints one after the other. All have one size.
struct SJobPages
{
    EPageNames m_names = EPageNames::Single;
    int m_count = 1;
    int m_first = 1;              // number of the first page in the names of a pattern
    bool m_bMissingBlank = false; // a page is blank for a unit whose file is not there; else that is a mistake
    SJobPlace m_place;
};

// One print unit of the carriage and the separation that it prints.
struct SJobUnit
{
    // False: the unit has no bands; it prints ink stripes only, or nothing if the job has none.
    bool HasSeparation() const { return !m_separation.empty(); }

    int m_unitId = 0;
    int m_direction = 1; // the orientation of the unit's bands
    // As the job file names it, UTF-8: a file, the pattern of the pages' files, or the first name of a list. May be
    // empty.
    std::string m_separation;
    std::vector<std::string> m_separations;     // of a list, by page; empty: the unit has nothing on the page
    std::vector<SJobPlace> m_places_Separation; // of a list's names
    std::string m_name;                         // a label, UTF-8; may be empty
    int m_unitPosition = 0;                     // in the colour group, from 0
    int m_horizon_1 = 0;                        // horizontal offset in the right-to-left pass, scan positions
    int m_horizon_2 = 0;                        // horizontal offset in the left-to-right pass, scan positions
    SJobStripeColor m_stripeColor;
    SJobPlace m_place_UnitId;
    SJobPlace m_place_Separation;
    SJobPlace m_place_UnitPosition;
};

// The ink stripes of all units; all widths and lengths in scan positions.
struct SJobInkStripe
{
    int m_leftStripeWidth = 0;   // of the zone left of the page; 0: no left stripes
    int m_rightStripeWidth = 0;  // of the zone right of the page; 0: no right stripes
    int m_unitPitch = 0;         // from the stripe of one unit position to the next
    int m_unitPositionCount = 0; // above every unit's position
    int m_stripeLength = 0;      // of a solid stripe, and the most that a TIFF's may have
};

struct SJob
{
    std::string m_file;             // the job file as the command line gave it, UTF-8
    std::filesystem::path m_folder; // that relative names count from
    int m_version = 1;

    EStageKind m_stageKind = EStageKind::InkStripe;
    bool m_bSkipBlank = false; // a swath without ink on any unit makes no board band
    int m_inputBands = 3;      // bands in each unit's pool

    SDPOption m_dpOption;
    int m_lineGeneratorCount = 2; // threads that map the lines of a board band; not on the base stage

    EDotSizeMode m_dotSizeMode = EDotSizeMode::None;
    int m_bitsPerPixel = 1;          // of every separation: 1 or 2
    int m_alignByteCountPerLine = 1; // of unit bands
    bool m_bBidirectional = false;
    int m_maskCount_1 = 1; // masks in the scan direction
    int m_maskCount_2 = 1; // masks in the feed direction

    SJobInkStripe m_inkStripe;
    SJobPages m_pages;

    int m_nozzles = 0; // of a head: rows of a swath
    std::vector<SJobUnit> m_units;

    SJobMap m_map; // follows from the options; never EMapClass::None

    // Something is wrong with the pages themselves, so that none can be looked at.
    bool HasPageMistake() const;

    // Where each value that the file gives stands, by "Table.Key", and each table, by its name; a unit's keys begin
    // with "CartInfo.Unit[2].", counted from 0.
    std::map<std::string, SJobPlace> m_places;

    // The keys whose values are not known, since they are wrong or missing; empty in a job that can run.
    std::set<std::string> m_mistaken;
};

// Reads the job file and checks everything that can be known without its separations, among it every precondition that
// the library leaves to its caller. Adds every mistake of the file; what depends on a mistaken value is not looked at.
// False if the file could not be read as a job at all.
bool Job_Read(const std::filesystem::path& file, SJob& job, CMistakeList& mistakes);

// The same for who needs a job without mistakes: throws CInputError with all of them.
SJob Job_Load(const std::filesystem::path& file);

// The place of this value ("DPOption.PrinterDataWidth"), or of its table if the file leaves it out.
SJobPlace Job_Place(const SJob& job, const std::string& key);

// The file that the unit prints on this page of the job, from 0, as the job names it; empty: it has none. And the same
// from the job file's folder; empty, too.
std::string Job_SeparationName(const SJob& job, const SJobUnit& unit, int page);
std::filesystem::path Job_SeparationPath(const SJob& job, const SJobUnit& unit, int page);

// "unit 3 (Cyan)".
std::string Job_UnitText(const SJobUnit& unit);
