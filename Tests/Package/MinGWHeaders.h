// Put before every source by check-portability: makes MinGW's headers, which are meant for GCC, pass a clang that takes
// Microsoft's part. Part of that test only; no build includes it.
#pragma once

#include <_mingw.h>

#define __MINGW_IMPORT extern __declspec(dllimport)
#undef __SIZEOF_INT128__ // Microsoft's compiler has no such type
