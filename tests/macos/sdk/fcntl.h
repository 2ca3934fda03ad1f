// The system's own header, and the command of fcntl(2) that only macOS has.
#pragma once

#include_next <fcntl.h>

#define F_FULLFSYNC 51
