// Where the plain edition's records go: to one listener, if there is one. Without one no record is built.
//
// The library cannot include this header: it does not lie below the folder of the contract's headers.
#pragma once

#include <functional>
#include <string>

struct SPlainLogRecord
{
    int severity = 0;
    std::string message;
    std::string function; // the scope's name
    std::string fileName;
    int line = 0;
};

// The record of a band FIFO that was to have room for less than one band.
void PlainLog_CapacityRefused(int capacity);

// Called for every record, on the thread that writes it, one at a time. An empty function ends it; once this has
// returned, the listener before is not called again.
void PlainLog_Listen(std::function<void(const SPlainLogRecord&)> listener);
