#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/ZlibCheck.hpp"

#include <algorithm>
#include <array>
#include <memory>
#include <new>

#include <zlib.h>

#include "platform/linux/images/ImageError.hpp"

namespace kestrivane {
namespace {

struct Inflation {
  Inflation() {
    if (inflateInit(&stream) != Z_OK) throw std::bad_alloc();
  }
  Inflation(const Inflation&) = delete;
  Inflation& operator=(const Inflation&) = delete;
  ~Inflation() { inflateEnd(&stream); }

  z_stream stream{};
  std::array<std::uint8_t, 32 * 1024> stored;
  std::array<std::uint8_t, 32 * 1024> inflated;  // looked at by nobody
};

}  // namespace

void checkZlibStream(const ImageInput& input, std::uint64_t offset, std::uint64_t size,
                     std::uint64_t limit) {
  const auto inflation = std::make_unique<Inflation>();
  z_stream& stream = inflation->stream;
  for (int result = Z_OK; result != Z_STREAM_END;) {
    if (stream.avail_in == 0) {
      const std::span<std::uint8_t> wanted(inflation->stored.data(),
                                           std::min<std::uint64_t>(size, inflation->stored.size()));
      stream.next_in = wanted.data();
      stream.avail_in = static_cast<uInt>(input.readUpTo(offset, wanted));
      offset += stream.avail_in;
      size -= stream.avail_in;
    }
    stream.next_out = inflation->inflated.data();
    stream.avail_out = static_cast<uInt>(inflation->inflated.size());
    result = inflate(&stream, Z_NO_FLUSH);
    // Without any input left there is no progress, which is an error too.
    if ((result != Z_OK && result != Z_STREAM_END) || stream.total_out > limit)
      throw ImageError("the zlib stream is damaged");
  }
}

}  // namespace kestrivane
