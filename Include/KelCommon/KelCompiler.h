// The compiler's part: the only place where this code base leaves standard C++.
//
// Everything that needs an attribute, a declspec or a predefined identifier of one compiler is spelled here once and
// used by name everywhere else. Nothing in this header has a run-time part.
#pragma once

#if defined(_WIN32)
#define KEL_EXPORT __declspec(dllexport)
#define KEL_IMPORT __declspec(dllimport)
#else
#define KEL_EXPORT __attribute__((visibility("default")))
#define KEL_IMPORT __attribute__((visibility("default")))
#endif

// The full signature of the enclosing function, as a static string.
#if defined(_MSC_VER) && !defined(__clang__)
#define KEL_FUNCTION_SIGNATURE __FUNCSIG__
#else
#define KEL_FUNCTION_SIGNATURE __PRETTY_FUNCTION__
#endif
