// Telling the two formats apart.
#include "Host/Board/BoardReader.h"

#include "Host/Board/BoardRawReader.h"
#include "Host/Board/BoardTiffReader.h"
#include "Host/InputFile.h"
#include "Host/PathText.h"

#include <cerrno>
#include <fstream>

namespace
{

std::string Damage_Text(const std::string& file, const SBoardDamage& damage)
{
    std::string text = Name_Shown(file) + ": ";
    text += damage.m_offset >= 0 ? "byte " + std::to_string(damage.m_offset) + ": " : "";
    text += damage.m_page >= 0 ? "page " + std::to_string(damage.m_page) + ": " : "";
    return text + damage.m_what + (damage.m_fix.empty() ? "" : "; " + damage.m_fix);
}

} // namespace

CBoardDamageError::CBoardDamageError(const std::string& file, const SBoardDamage& damage)
    : CInputError(Damage_Text(file, damage)), m_damage(std::make_shared<SBoardDamage>(damage))
{
}

std::unique_ptr<CBoardReader> CBoardReader::Open(const std::filesystem::path& file)
{
    const std::string name = Path_Text(file);
    std::ifstream stream = InputFile_Open(file, "board file");
    char first[2] = {};
    errno = 0;
    stream.read(first, sizeof(first));
    if (stream.bad())
    {
        throw CBoardDamageError(name, {-1, -1, "cannot be read: " + SystemError_Text(errno), ""});
    }
    if (stream.gcount() == 0)
    {
        throw CBoardDamageError(name, {-1, -1, "the file is empty", ""});
    }
    const bool bTiff = first[0] == first[1] && (first[0] == 'I' || first[0] == 'M');
    stream.close();
    if (bTiff)
    {
        return std::make_unique<CBoardTiffReader>(file);
    }
    return std::make_unique<CBoardRawReader>(file);
}

bool CBoardReader::Band_Read(CBandData& band, SBoardPass& pass)
{
    if (!Band_ReadNext(band, pass))
    {
        return false;
    }
    if (m_info.m_version == 1)
    {
        constexpr std::int32_t leftToRight = 1;
        pass = {};
        pass.m_bLeftToRight = band.m_bandAttr == leftToRight;
        pass.m_columnStep = 0;
        pass.m_bBlank = Band_IsBlank(band);
    }
    ++m_bandCount;
    return true;
}

bool CBoardReader::Resume()
{
    m_bResumed = true;
    return Resume_Next();
}
