// Printing an answer.
#include "Host/Command/Answer.h"

#include "Host/Output/ByteSink.h"

void Answer_Print(const std::string& text)
{
    CStandardOutput output;
    output.Write(text.data(), text.size());
    output.Finish();
}
