// Decodes whatever bytes it is handed as the bookmark of a folder: as they are, and with a
// signature, version and checksum that are right, so that what stands behind those is tried too.
//
// What can be decoded must come out as the same bytes when it is encoded again.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>

#include "platform/PlatformError.hpp"
#include "platform/linux/system/FolderBookmark.hpp"

namespace {

using namespace kestrivane;

void require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "fuzz: %s\n", what);
  std::abort();
}

void decode(const Data& bytes) {
  try {
    const FolderBookmark bookmark = FolderBookmark::decode(bytes);
    require(bookmark.path.starts_with('/'), "a path is not absolute");
    require(bookmark.encode() == bytes, "a bookmark changes on its way");
  } catch (const PlatformError& error) {
    require(!error.localizedDescription().empty(), "an error without description");
  }
}

/// The bytes behind the checksum, as they are in bookmarks (see FolderBookmark.cpp).
constexpr std::size_t contentStart = 16;

/// FNV-1a with 64 bits, low byte first.
void repairHeader(Data& bytes) {
  const Data header = FolderBookmark{"/", {}}.encode();
  std::copy_n(header.begin(), 8, bytes.begin());
  std::uint64_t sum = 0xCBF29CE484222325;
  for (const std::byte byte : std::span(bytes).subspan(contentStart))
    sum = (sum ^ std::to_integer<std::uint64_t>(byte)) * 0x100000001B3;
  for (std::size_t i = 0; i < 8; ++i)
    bytes[8 + i] = static_cast<std::byte>(sum >> (8 * i));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t count) {
  const auto* const start = reinterpret_cast<const std::byte*>(input);
  Data bytes(start, start + count);
  decode(bytes);
  if (bytes.size() < contentStart) return 0;
  repairHeader(bytes);
  decode(bytes);
  return 0;
}
