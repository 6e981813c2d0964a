// The command init: writes a job for separations that are there.
#pragma once

#include "Host/Command/Command.h"

const SCommand& Command_Init();
