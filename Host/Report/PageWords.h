// What the report's page needs to answer as boardmap explain does: where the bits of every nozzle stand, what is said
// of them, and what moved them, in explain's own words; and where the stripes begin. Pure functions; any thread.
#pragma once

#include "Host/Job/JobPage.h"
#include "Host/Model/PageModel.h"

#include <nlohmann/json_fwd.hpp>

// {"Roles": ["ink"], "Rules": ["the unit ..."], "Directions": ["", "swath 1 goes ..."], "DropSize": 0, "Units": [...]}.
// Of a unit: "Info" (as in the board info), "Text" ("unit 3 (Cyan)"), "HasPage" (the job has a separation of the page,
// or the unit prints none), "SeparationShown" (which), "Stripes" (for right to left and left to right, where the left
// and the right one begin; -1: none), "Places" (by nozzle) and "Rules" (for left to right and right to left, by nozzle;
// places in the list of rules, -1: the direction of the swath). A place is [line of the position, bit of the line,
// role, bit of the pixel (-1: any ink), 1 if ink sets it, its bit of the dot's value].
nlohmann::ordered_json PageWords_Json(const CPageModel& model, const CJobPage& job, int page);
