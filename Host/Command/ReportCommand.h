// boardmap report.
#pragma once

#include "Host/Command/Command.h"

const SCommand& Command_Report();
