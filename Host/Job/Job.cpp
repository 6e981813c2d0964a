// Loads a job file: read, parse, check.
#include "Host/Job/Job.h"

#include "Host/HostError.h"
#include "Host/Job/JobCheck.h"
#include "Host/Job/JobNames.h"
#include "Host/Job/JobReader.h"
#include "Host/PageName.h"
#include "Host/PathText.h"
#include "Host/ShownText.h"

#include <algorithm>

bool Job_Read(const std::filesystem::path& file, SJob& job, CMistakeList& mistakes)
{
    try
    {
        job = JobText_Parse(file, JobText_Read(file), mistakes);
    }
    catch (const CInputError& error)
    {
        for (const SMistake& mistake : error.Mistakes_Get())
        {
            mistakes.Add(mistake);
        }
        return false;
    }
    Job_Check(job, mistakes);
    return true;
}

SJob Job_Load(const std::filesystem::path& file)
{
    SJob job;
    CMistakeList mistakes;
    Job_Read(file, job, mistakes);
    mistakes.Errors_Throw();
    return job;
}

bool SJob::HasPageMistake() const
{
    return std::ranges::any_of(m_mistaken, [](const std::string& key) { return key.starts_with("Pages"); });
}

SJobPlace Job_Place(const SJob& job, const std::string& key)
{
    auto found = job.m_places.find(key);
    if (found == job.m_places.end())
    {
        found = job.m_places.find(key.substr(0, key.find('.')));
    }
    return found == job.m_places.end() ? SJobPlace{} : found->second;
}

std::string Job_SeparationName(const SJob& job, const SJobUnit& unit, int page)
{
    if (!unit.HasSeparation())
    {
        return "";
    }
    switch (job.m_pages.m_names)
    {
    case EPageNames::Pattern:
        return PageName_Make(unit.m_separation, std::int64_t{job.m_pages.m_first} + page);
    case EPageNames::List:
        return unit.m_separations.at(static_cast<std::size_t>(page));
    case EPageNames::Single:
        break;
    }
    return unit.m_separation;
}

std::filesystem::path Job_SeparationPath(const SJob& job, const SJobUnit& unit, int page)
{
    const std::string name = Job_SeparationName(job, unit, page);
    return name.empty() ? std::filesystem::path() : job.m_folder / Path_FromText(name);
}

std::string Job_UnitText(const SJobUnit& unit)
{
    return "unit " + std::to_string(unit.m_unitId) +
           (unit.m_name.empty() ? "" : " (" + Text_Printable(unit.m_name) + ')');
}
