// boardmap kernels, and the kernel that a conversion is told to use: the host's side of DataMapKernel.h.
#pragma once

#include "Host/Command/Command.h"

#include <string>

const SCommand& Command_Kernels();

// Uses the library's kernel of this name; an empty name leaves the library its choice. Throws CInputError, with the
// names that would do, if this machine runs none of that name. On the main thread, before anything is converted.
void Kernel_Use(const std::string& name);
