// The system's call that starts a thread, where the system has none of this name.
#pragma once

#include <cstddef>
#include <cstdint>

// Starts a thread that runs `startRoutine(parameter)`, which may have begun, and ended, before this returns. Returns
// the thread's handle, or null if no thread could be started. `*threadId` receives the thread's number.
void* CreateThread(void* securityAttributes, std::size_t stackSize, unsigned long (*startRoutine)(void*),
                   void* parameter, std::uint32_t creationFlags, std::uint32_t* threadId);
