// The system's own header, and the name that macOS gives to the time of modification.
#pragma once

#include_next <sys/stat.h>

#define st_mtimespec st_mtim
