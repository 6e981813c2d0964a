// Tells the library's own maps from a client's.
#pragma once

class CPrintUnitDataMap_Base;

// True for a map of exactly one of the library's own styles: all its lines cost the same, and none of them fails. A
// client's class, one derived from a style too, may do anything in a line.
bool MapStyle_IsOwn(const CPrintUnitDataMap_Base& map);
