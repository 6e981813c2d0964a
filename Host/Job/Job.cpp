// Loads a job file: read, parse, check.
#include "Host/Job/Job.h"

#include "Host/HostError.h"
#include "Host/Job/JobCheck.h"
#include "Host/Job/JobNames.h"
#include "Host/Job/JobReader.h"
#include "Host/ShownText.h"

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

SJobPlace Job_Place(const SJob& job, const std::string& key)
{
    auto found = job.m_places.find(key);
    if (found == job.m_places.end())
    {
        found = job.m_places.find(key.substr(0, key.find('.')));
    }
    return found == job.m_places.end() ? SJobPlace{} : found->second;
}

std::string Job_UnitText(const SJobUnit& unit)
{
    return "unit " + std::to_string(unit.m_unitId) +
           (unit.m_name.empty() ? "" : " (" + Text_Printable(unit.m_name) + ')');
}
