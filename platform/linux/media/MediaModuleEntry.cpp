// The functions that the module offers to the program that loads it.
#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include <type_traits>

#include "platform/linux/media/MediaModule.hpp"
#include "platform/linux/media/MediaReach.hpp"

using namespace kestrivane;

extern "C" [[gnu::visibility("default")]] OpenedMedia* kestrivaneOpenMedia(const FileURL& url) {
  return openMedia(url).release();
}

extern "C" [[gnu::visibility("default")]] bool kestrivaneIsMediaCutShort(const FileURL& result,
                                                                         const FileURL& source) {
  return isCutShort(result, source);
}

static_assert(std::is_same_v<decltype(kestrivaneOpenMedia), mediaModule::Open>);
static_assert(std::is_same_v<decltype(kestrivaneIsMediaCutShort), mediaModule::IsCutShort>);
