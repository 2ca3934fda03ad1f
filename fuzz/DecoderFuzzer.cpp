// Decodes whatever bytes it is handed with one codec, KESTRIVANE_FUZZED_CODEC.
//
// A picture that can be decoded is decoded twice, into memory filled with different bytes before:
// a pixel that no code has set shows by being different. Pictures of more than 4 million pixels are
// refused by the codecs in this build, so that time goes into many pictures rather than large ones.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>

#include "platform/linux/images/CodecTable.hpp"

namespace {

unsigned char fillByte = 0;

}  // namespace

// Pixels lie in arrays; those that the codecs make get a known content.
void* operator new[](std::size_t count) {
  void* const memory = std::malloc(std::max<std::size_t>(count, 1));
  if (memory == nullptr) throw std::bad_alloc();
  return std::memset(memory, fillByte, count);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace kestrivane {
namespace {

void require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "fuzz: %s\n", what);
  std::abort();
}

std::optional<PixelBuffer> decode(const ImageInput& input, unsigned char fill) try {
  fillByte = fill;
  return KESTRIVANE_FUZZED_CODEC.decode(input);
} catch (const std::exception&) {
  return std::nullopt;
}

}  // namespace
}  // namespace kestrivane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  using namespace kestrivane;
  const ImageInput input = ImageInput::ofBytes({bytes, count});
  const auto first = decode(input, 0x55);
  if (!first) return 0;
  const auto second = decode(input, 0xAA);
  require(second.has_value(), "the same bytes can be decoded only sometimes");
  require(first->width() == second->width() && first->height() == second->height() &&
              first->layout() == second->layout() && first->iccProfile == second->iccProfile,
          "the same bytes make two kinds of picture");
  require(std::equal(first->row(0), first->row(0) + first->byteCount(), second->row(0)),
          "a pixel has not been set");
  return 0;
}
