// The system's own header, and the renames that only macOS has (its manual page rename(2)).
#pragma once

#include_next <stdio.h>

#define RENAME_SWAP 0x00000002
#define RENAME_EXCL 0x00000004

#ifdef __cplusplus
extern "C"
#endif
    int
    renamex_np(const char* from, const char* to, unsigned int flags);
