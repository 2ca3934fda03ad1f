// How the process keeps memory. Thread-safety: call it first in `main`, before other threads exist.
// Ownership: none.
#pragma once

namespace kestrivane {

/// Makes the allocator hand large blocks back to the system as soon as they are freed. By default
/// it keeps for later what a decoded picture took, which for a program that is idle most of its
/// life is never: after a photo of 12 megapixels it would go on holding 165 MB instead of 25.
void returnLargeBlocksWhenFreed();

}  // namespace kestrivane
