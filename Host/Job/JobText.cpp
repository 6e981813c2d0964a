// The job file's bytes, from a file that may be anything.
#include "Host/Job/JobReader.h"

#include "Host/HostError.h"
#include "Host/InputFile.h"
#include "Host/PathText.h"

#include <cerrno>
#include <cstddef>
#include <fstream>

namespace
{

constexpr std::size_t longestFile = std::size_t{4} << 20U;

[[noreturn]] void File_Refuse(const std::filesystem::path& file, const std::string& reason)
{
    throw CInputError({SMistake{false, Path_Text(file), {0, 0}, "file", reason, ""}});
}

} // namespace

std::string JobText_Read(const std::filesystem::path& file)
{
    std::ifstream stream = InputFile_Open(file, "job file");
    errno = 0;
    std::string text(longestFile + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (stream.bad())
    {
        File_Refuse(file, "cannot be read: " + SystemError_Text(errno));
    }
    text.resize(static_cast<std::size_t>(stream.gcount()));
    if (text.empty())
    {
        File_Refuse(file, "the job file is empty");
    }
    if (text.size() > longestFile)
    {
        File_Refuse(file, "is longer than 4 MiB; a job file is a short text");
    }
    return text;
}
