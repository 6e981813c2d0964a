// The threads behind the handles: what the edition's own worker base does with them.
//
// The library cannot include this header: it does not lie below the folder of the contract's headers.
#pragma once

// Waits up to `timeoutMs` (4294967295: without limit) for the thread to end; true if it has.
bool PlainThread_Wait(void* handle, unsigned timeoutMs);

// What the start routine of a thread that has ended returned.
unsigned long PlainThread_ExitCode(void* handle);

// Joins the thread and gives its handle up.
void PlainThread_Close(void* handle);
