// boardmap explain: its words and options; Explainer.h has the answers.
#pragma once

#include "Host/Command/Command.h"

const SCommand& Command_Explain();
