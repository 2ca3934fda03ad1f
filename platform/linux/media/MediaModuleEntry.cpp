// The one function that the module offers to the program that loads it.
#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include <type_traits>

#include "platform/linux/media/MediaModule.hpp"

extern "C" [[gnu::visibility("default")]] kestrivane::OpenedMedia* kestrivaneOpenMedia(
    const kestrivane::FileURL& url) {
  return kestrivane::openMedia(url).release();
}

static_assert(std::is_same_v<decltype(kestrivaneOpenMedia), kestrivane::mediaModule::Entry>);
