// The command check: all mistakes of a job and its separations at once, and what a run of it will be.
#pragma once

#include "Host/Command/Command.h"

const SCommand& Command_Check();
