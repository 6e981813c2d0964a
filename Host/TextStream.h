// Putting a text together with the operators of streams.
#pragma once

#include <sstream>

// Throws what its memory throws when there is none: a plain string stream would go on without what is then missing.
class CTextStream : public std::ostringstream
{
public:
    CTextStream() { exceptions(std::ios::badbit); }
};
