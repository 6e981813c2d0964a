// Loads a job file: read, parse, check.
#include "Host/Job/Job.h"

#include "Host/Job/JobCheck.h"
#include "Host/Job/JobReader.h"

SJob Job_Load(const std::filesystem::path& file)
{
    SJob job = JobText_Parse(file, JobText_Read(file));
    Job_Check(job);
    return job;
}

std::string Job_PlaceText(const SJob& job, const std::string& key)
{
    auto found = job.m_places.find(key);
    if (found == job.m_places.end())
    {
        found = job.m_places.find(key.substr(0, key.find('.')));
    }
    return Job_PlaceText(job, found == job.m_places.end() ? SJobPlace{} : found->second);
}

std::string Job_PlaceText(const SJob& job, const SJobPlace& place)
{
    return job.m_file + ':' + std::to_string(place.m_line) + ':' + std::to_string(place.m_column) + ": ";
}
