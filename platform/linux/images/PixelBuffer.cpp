#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PixelBuffer.hpp"

#include <new>

#include <sys/mman.h>

namespace kestrivane {

/// Large pictures in huge pages where the system has these: to be handed a photo in small pages,
/// one by one at the first touch, takes a third of the time of writing it as a BMP.
PixelBuffer::Pixels PixelBuffer::allocate(std::size_t bytes) {
  constexpr std::size_t hugePage = std::size_t{2} << 20;
  const bool isLarge = bytes >= 2 * hugePage;
  Pixels pixels(static_cast<std::uint8_t*>(
      isLarge ? std::aligned_alloc(hugePage, (bytes + hugePage - 1) / hugePage * hugePage)
              : std::malloc(bytes)));
  if (!pixels) throw std::bad_alloc();
  if (isLarge) ::madvise(pixels.get(), bytes / hugePage * hugePage, MADV_HUGEPAGE);
  return pixels;
}

}  // namespace kestrivane
