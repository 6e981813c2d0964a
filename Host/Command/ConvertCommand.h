// boardmap convert: its words and options; Convert.h does the work.
#pragma once

#include "Host/Command/Command.h"

const SCommand& Command_Convert();
