// A job as its file describes it, checked. Made on the main thread before anything else of a command, then only read.
// The file's keys are explained in Docs/job-file.md.
#pragma once

#include "Host/Job/MapClass.h"
#include "Platform/PrintParam/PrintParamRecords.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

// The conversion stage that runs the job.
enum class EStageKind
{
    Base,
};

// A place in the job file, both counted from 1.
struct SJobPlace
{
    int m_line = 1;
    int m_column = 1;
};

// One print unit of the carriage and the separation that it prints.
struct SJobUnit
{
    int m_unitId = 0;
    int m_direction = 1;                    // 1 = descending, 2 = ascending block order
    std::string m_separation;               // as the job file names it, UTF-8
    std::filesystem::path m_separationPath; // the same, found from the job file's folder
    std::string m_name;                     // a label, UTF-8; may be empty
    SJobPlace m_place_UnitId;
    SJobPlace m_place_Separation;
};

struct SJob
{
    std::string m_file; // the job file as the command line gave it, UTF-8
    int m_version = 1;

    EStageKind m_stageKind = EStageKind::Base;
    bool m_bSkipBlank = false; // a swath without ink on any unit makes no board band
    int m_inputBands = 3;      // bands in each unit's pool

    SDPOption m_dpOption;

    EDotSizeMode m_dotSizeMode = EDotSizeMode::None;
    int m_bitsPerPixel = 1;          // of every separation: 1 or 2
    int m_alignByteCountPerLine = 1; // of unit bands
    bool m_bBidirectional = false;

    int m_nozzles = 0; // pixels across a unit band
    std::vector<SJobUnit> m_units;

    SJobMap m_map; // follows from the options; never EMapClass::None

    // Where each value that the file gives stands, by "Table.Key", and each table, by its name.
    std::map<std::string, SJobPlace> m_places;
};

// Reads the job file and checks everything that can be known without its separations, among it every precondition that
// the library leaves to its caller. Throws CInputError: "job.toml:12:20: ..." for the first problem of the file.
SJob Job_Load(const std::filesystem::path& file);

// "job.toml:12:20: ", the place of this value ("DPOption.PrinterDataWidth"), or of its table if the file leaves it out.
std::string Job_PlaceText(const SJob& job, const std::string& key);
std::string Job_PlaceText(const SJob& job, const SJobPlace& place);
