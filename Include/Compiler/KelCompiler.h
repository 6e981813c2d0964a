// The compiler's part: the only place where this code base leaves standard C++.
//
// Everything that needs an attribute, a declspec or a predefined identifier of one compiler is spelled here once and
// used by name everywhere else. What has a run-time part here is a hint: leaving it out changes nothing that the code
// does.
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

// Tells the processor that the calling thread spins: it saves power and leaves the core to its sibling for a moment.
#if defined(__x86_64__) || defined(_M_X64)
#include <emmintrin.h>
#define KEL_CPU_RELAX() _mm_pause()
#elif defined(__aarch64__)
#define KEL_CPU_RELAX() __asm__ __volatile__("yield")
#else
#define KEL_CPU_RELAX() static_cast<void>(0)
#endif

// Under AddressSanitizer: memory that nobody may touch until it is permitted again. Elsewhere nothing.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KEL_ADDRESS_SANITIZER
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(KEL_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#define KEL_MEMORY_FORBID(address, size) __asan_poison_memory_region(address, size)
#define KEL_MEMORY_PERMIT(address, size) __asan_unpoison_memory_region(address, size)
#else
#define KEL_MEMORY_FORBID(address, size) static_cast<void>(address)
#define KEL_MEMORY_PERMIT(address, size) static_cast<void>(address)
#endif

// Asks the processor to fetch the cache line at an address. A hint: any address will do, also one where
// there is no memory.
#if defined(__x86_64__) || defined(_M_X64)
#define KEL_PREFETCH(address) _mm_prefetch(static_cast<const char*>(static_cast<const void*>(address)), _MM_HINT_T0)
#elif defined(__GNUC__)
#define KEL_PREFETCH(address) __builtin_prefetch(address)
#else
#define KEL_PREFETCH(address) static_cast<void>(address)
#endif
