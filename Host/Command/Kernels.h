// boardmap kernels, and the kernel that a conversion is told to use: the host's side of DataMapKernel.h. Main calls it
// on the command's main thread, before anything is converted.
#pragma once

#include <ostream>
#include <string>

// Uses the library's kernel of this name; an empty name leaves the library its choice. Throws CInputError, with the
// names that would do, if this machine runs none of that name.
void Kernel_Use(const std::string& name);

// One line for each kernel that this machine runs, from the definition to the most demanding; behind the one that
// conversions use without being told stands what it is.
void Kernels_Print(std::ostream& stream);
