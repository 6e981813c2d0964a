// The files of Page/ and the libraries of the report's page, as the build put them into the program. The lines that
// name source maps are left out, so that no browser looks for them.
#pragma once

#include <string_view>

namespace PageFiles
{

std::string_view ReportHtml();
std::string_view ReportCss();
std::string_view ReportJs();
std::string_view LeafletJs();
std::string_view LeafletCss();
std::string_view DygraphJs();
std::string_view DygraphCss();
std::string_view Licences();

} // namespace PageFiles
