// boardmap layout: its words and options; Layout.h does the work.
#pragma once

#include "Host/Command/Command.h"

const SCommand& Command_Layout();
