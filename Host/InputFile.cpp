// The one place where files are opened for reading.
#include "Host/InputFile.h"

#include "Host/HostError.h"
#include "Host/PathText.h"

#include <cerrno>
#include <system_error>

std::ifstream InputFile_Open(const std::filesystem::path& file, const std::string& kind)
{
    const auto Refuse = [&file](const std::string& what) {
        throw CInputError({SMistake{false, Path_Text(file), {0, 0}, "file", what, ""}});
    };
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found)
    {
        Refuse("there is no such file");
    }
    if (std::filesystem::is_directory(status))
    {
        Refuse("is a folder, not a " + kind);
    }
    if (error)
    {
        Refuse("cannot be opened: " + error.message());
    }
    if (!std::filesystem::is_regular_file(status))
    {
        Refuse("is a device or a pipe, not a " + kind);
    }
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
    {
        Refuse("cannot be opened: " + SystemError_Text(errno));
    }
    return stream;
}

std::string SystemError_Text(int error)
{
    return error == 0 ? "unknown reason" : std::generic_category().message(error);
}
