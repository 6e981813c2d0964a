// Lists of mistakes and their texts.
#include "Host/Mistake.h"

#include "Host/HostError.h"
#include "Host/ShownText.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace
{

void Mistakes_Sort(std::vector<SMistake>& mistakes)
{
    std::ranges::stable_sort(mistakes, std::less<>(), &SMistake::m_place);
}

} // namespace

std::string Mistake_Text(const SMistake& mistake)
{
    const std::string place =
        ':' + std::to_string(mistake.m_place.m_line) + ':' + std::to_string(mistake.m_place.m_column);
    return Name_Shown(mistake.m_file) + (mistake.m_place.m_line > 0 ? place : "") + ": " +
           (mistake.m_bWarning ? "warning: " : "") + mistake.m_what +
           (mistake.m_fix.empty() ? "" : "; " + mistake.m_fix);
}

void CMistakeList::Sort()
{
    Mistakes_Sort(m_mistakes);
}

bool CMistakeList::HasErrors() const
{
    return ErrorCount() > 0;
}

int CMistakeList::ErrorCount() const
{
    return static_cast<int>(
        std::ranges::count_if(m_mistakes, [](const SMistake& mistake) { return !mistake.m_bWarning; }));
}

void CMistakeList::Errors_Throw() const
{
    std::vector<SMistake> errors;
    std::ranges::copy_if(m_mistakes, std::back_inserter(errors),
                         [](const SMistake& mistake) { return !mistake.m_bWarning; });
    if (!errors.empty())
    {
        Mistakes_Sort(errors);
        throw CInputError(std::move(errors));
    }
}

std::string CInputError::WithoutFile() const
{
    if (m_mistakes == nullptr || m_mistakes->empty())
    {
        return what();
    }
    const SMistake& first = m_mistakes->front();
    return first.m_what + (first.m_fix.empty() ? "" : "; " + first.m_fix);
}

CInputError::CInputError(std::vector<SMistake> mistakes)
    : std::runtime_error(Mistakes_Text(mistakes)),
      m_mistakes(std::make_shared<std::vector<SMistake>>(std::move(mistakes)))
{
}

std::string Mistakes_Text(const std::vector<SMistake>& mistakes)
{
    std::string text;
    for (const SMistake& mistake : mistakes)
    {
        text += (text.empty() ? "" : "\n") + Mistake_Text(mistake);
    }
    return text;
}
