#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/MediaError.hpp"

#include <array>
#include <cerrno>

extern "C" {
#include <libavutil/error.h>
}

namespace kestrivane {

PlatformError mediaError(int code) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(code, text.data(), text.size());
  return PlatformError(code, text.data());
}

int checked(int result) {
  if (result < 0) throw mediaError(result);
  return result;
}

void throwOutOfMemory() {
  throw mediaError(AVERROR(ENOMEM));
}

}  // namespace kestrivane
