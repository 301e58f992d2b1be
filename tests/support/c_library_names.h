/* The C library's names for functions that tests replace with their own, in a build with 64 bits
 * for file sizes and times. fortified_open is what open without a mode may become in a build with
 * _FORTIFY_SOURCE. */
#ifndef MORVANE_C_LIBRARY_NAMES_H
#define MORVANE_C_LIBRARY_NAMES_H

#include <features.h>

#define NAME_OF_open "open64"
#define fortified_open __open64_2
#if __TIMESIZE == 32
#define NAME_OF_stat "__stat64_time64"
#else
#define NAME_OF_stat "stat64"
#endif

#endif
