#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/ProcessMemory.hpp"

#include <malloc.h>

namespace kestrivane {

void returnLargeBlocksWhenFreed() {
#ifdef __GLIBC__  // other C libraries do so anyway
  // Setting the thresholds also ends their growing with the size of the blocks that are freed.
  constexpr int threshold = 1 << 20;
  mallopt(M_MMAP_THRESHOLD, threshold);
  mallopt(M_TRIM_THRESHOLD, threshold);
#endif
}

}  // namespace kestrivane
