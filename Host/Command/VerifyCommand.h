// boardmap verify: its words and options, and what the user is told; Verification.h does the work.
#pragma once

#include "Host/Command/Command.h"

const SCommand& Command_Verify();
