// One input band that a stage holds for the step in progress.
#pragma once

class CBandData;
class CBandDataFIFO;

struct SInputElement
{
    CBandData* band = nullptr;
    CBandDataFIFO* fifo = nullptr; // the FIFO whose pool the band goes back to; null: the stage made it and deletes it
};
