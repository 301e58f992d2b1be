/* The names under which the C library has functions that tests put their own in front of. On a
 * 32-bit device those that know sizes of files or times have others than in the source: the build
 * asks for 64 bits there. fortified_open is what open without a mode may become in a build with
 * _FORTIFY_SOURCE. */
#ifndef MORVANE_C_LIBRARY_NAMES_H
#define MORVANE_C_LIBRARY_NAMES_H

#include <features.h>

#if __TIMESIZE == 32
#define NAME_OF_open "open64"
#define fortified_open __open64_2
#define NAME_OF_stat "__stat64_time64"
#else
#define NAME_OF_open "open"
#define fortified_open __open_2
#define NAME_OF_stat "stat"
#endif

#endif
