// Repairs the checksums of a mutated PNG's chunks, without which hardly any would be read beyond
// its first chunk. One in sixteen is left as it is, for the check itself.
#include <algorithm>
#include <cstdint>
#include <span>

#include "platform/linux/images/PngChunk.hpp"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* bytes, std::size_t count,
                                        std::size_t maximum);

namespace kestrivane::png {
namespace {

void repairChecksums(std::span<std::uint8_t> file) {
  std::size_t place = signature.size();
  while (place + 12 <= file.size()) {
    const std::span rest = file.subspan(place);
    const std::size_t length = fromBigEndian(rest.first<4>());
    if (length > rest.size() - 12) return;
    const std::string_view type(reinterpret_cast<const char*>(rest.data()) + 4, 4);
    std::ranges::copy(bigEndian(chunkChecksum(type, rest.subspan(8, length))),
                      rest.begin() + static_cast<std::ptrdiff_t>(8 + length));
    place += length + 12;
  }
}

}  // namespace
}  // namespace kestrivane::png

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t count,
                                               std::size_t maximum, unsigned seed) {
  const std::size_t mutated = LLVMFuzzerMutate(bytes, count, maximum);
  if (seed % 16 > 0) kestrivane::png::repairChecksums({bytes, mutated});
  return mutated;
}
