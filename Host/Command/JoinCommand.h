// The command join; see Command.h.
#pragma once

#include "Host/Command/Command.h"

const SCommand& Command_Join();
