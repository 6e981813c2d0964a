// Printing an answer.
#include "Host/Command/Answer.h"

#include "Host/Output/ByteSink.h"
#include "Host/ShownText.h"

void Answer_Print(const std::string& text)
{
    const std::string shown = Text_Shown(text);
    CStandardOutput output;
    output.Write(shown.data(), shown.size());
    output.Finish();
}
