/* Which floating-point types the C library declares functions for. Its own header takes every clang for
   one that has 128 bits, which this target does not have. */
#ifndef _BITS_FLOATN_H
#define _BITS_FLOATN_H

#define __HAVE_FLOAT128 0
#define __HAVE_DISTINCT_FLOAT128 0
#define __HAVE_FLOAT64X 1
#define __HAVE_FLOAT64X_LONG_DOUBLE 1

#include <bits/floatn-common.h>

#endif
