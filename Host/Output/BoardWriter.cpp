// The order of a writer's calls.
#include "Host/Output/BoardWriter.h"

#include <stdexcept>

void CBoardWriter::Band_Write(const CBandData& band)
{
    State_CheckOpen();
    m_bOpen = false;
    Band_WriteNext(band);
    m_bOpen = true;
    ++m_bandCount;
}

void CBoardWriter::Finish()
{
    State_CheckOpen();
    m_bOpen = false;
    Finish_All();
}

void CBoardWriter::State_CheckOpen() const
{
    if (!m_bOpen)
    {
        throw std::logic_error("a board writer was used after it had finished or failed");
    }
}
