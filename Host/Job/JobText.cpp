// The job file's bytes, from a file that may be anything.
#include "Host/Job/JobReader.h"

#include "Host/HostError.h"
#include "Host/PathText.h"

#include <cerrno>
#include <cstddef>
#include <fstream>
#include <system_error>

namespace
{

constexpr std::size_t longestFile = std::size_t{4} << 20U;

[[noreturn]] void File_Refuse(const std::filesystem::path& file, const std::string& reason)
{
    throw CInputError({SMistake{false, Path_Text(file), {0, 0}, "file", reason, ""}});
}

std::string SystemError_Text(int error)
{
    return error == 0 ? "unknown reason" : std::generic_category().message(error);
}

} // namespace

std::string JobText_Read(const std::filesystem::path& file)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found)
    {
        File_Refuse(file, "there is no such job file");
    }
    if (std::filesystem::is_directory(status))
    {
        File_Refuse(file, "is a folder, not a job file");
    }
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
    {
        File_Refuse(file, "is a device or a pipe, not a job file"); // opening it could wait for ever
    }
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
    {
        File_Refuse(file, "cannot be opened: " + SystemError_Text(errno));
    }
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
