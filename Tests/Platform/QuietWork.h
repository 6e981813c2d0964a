// What the data path does again and again and must do without the system's help as long as nobody waits: the same work
// for every way to watch it.
#pragma once

#include "KelCommon/KelThreadBuffer_T.h"
#include "KelCommon/KelThreadPtrFIFO_T.h"
#include "Platform/Thread/CustomManualResetEvent.h"

inline void Event_Use(CCustomManualResetEvent& event)
{
    event.Wait(0, 0);
    event.Set();
    event.Wait(0, 0);
    event.Wait(100, 0); // on a set event
    event.Set();
    event.Reset();
    event.Reset();
}

// One element through an empty FIFO, whose it is not afterwards.
inline void FIFO_Use(CKelThreadPtrFIFO_T<int>& fifo, int& value)
{
    int* element = nullptr;
    fifo.HasSpaceEvent().Wait(100, 0);
    fifo.In(&value);
    fifo.HasDataEvent().Wait(100, 0);
    fifo.Out(element);
    fifo.Out(element);
}

// The whole road of a line index through a buffer that has all its elements free.
inline void LineRoad_Use(CKelThreadBuffer_T<int>& buffer)
{
    int* element = nullptr;
    buffer.Empty_Out(element, 100);
    buffer.Wait_In(element, 100);
    buffer.InFIFO()->Out(element);
    buffer.Full_In(element, 100);
    buffer.Full_Out(element, 100);
    buffer.Empty_In(element, 100);
}
