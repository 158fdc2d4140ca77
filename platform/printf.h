// printf's rules for functions that take a format: compilers that know them check the arguments of each call.
#pragma once

// format_index: the format's place among the parameters, from 1; first: that of its first argument, 0 for a
// va_list.
#if defined(__MINGW32__) && !defined(__clang__)
#define VEXA_PRINTF(format_index, first) __attribute__((format(gnu_printf, format_index, first)))
#elif defined(__GNUC__) || defined(__clang__)
#define VEXA_PRINTF(format_index, first) __attribute__((format(printf, format_index, first)))
#else
#define VEXA_PRINTF(format_index, first)
#endif
