// boardmap info: says what a board file holds, and where it breaks.
#pragma once

#include "Host/Command/Command.h"

const SCommand& Command_Info();
