#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/FolderBookmark.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <concepts>
#include <limits>

#include "platform/PlatformError.hpp"
#include "state/L10n.hpp"

// The bytes, all numbers with their low byte first:
//   0  "KVBM"
//   4  version, 32 bits
//   8  checksum of all that follows, 64 bits
//  16  file system, 64 bits
//  24  inode, 64 bits
//  32  birth: seconds, 64 bits
//  40  birth: nanoseconds, 32 bits; all ones where it is not known
//  44  path, up to the end

namespace kestrivane {
namespace {

constexpr std::array signature{std::byte{'K'}, std::byte{'V'}, std::byte{'B'}, std::byte{'M'}};
constexpr std::uint32_t currentVersion = 1;
constexpr std::size_t versionStart = 4;
constexpr std::size_t checksumStart = 8;
constexpr std::size_t contentStart = 16;
constexpr std::size_t pathStart = 44;
constexpr std::uint32_t unknownBirth = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t nanosecondsInSecond = 1'000'000'000;

template <std::unsigned_integral Number>
void append(Data& bytes, Number value) {
  for (std::size_t i = 0; i < sizeof value; ++i)
    bytes.push_back(static_cast<std::byte>(value >> (8 * i)));
}

template <std::unsigned_integral Number>
Number numberAt(std::span<const std::byte> bytes, std::size_t start) {
  Number value = 0;
  for (std::size_t i = sizeof value; i-- > 0;)
    value = static_cast<Number>(value << 8 | std::to_integer<Number>(bytes[start + i]));
  return value;
}

/// FNV-1a with 64 bits.
std::uint64_t checksum(std::span<const std::byte> bytes) {
  std::uint64_t sum = 0xCBF29CE484222325;
  for (const std::byte byte : bytes)
    sum = (sum ^ std::to_integer<std::uint64_t>(byte)) * 0x100000001B3;
  return sum;
}

PlatformError damaged() {
  return PlatformError(EBADMSG,
                       L10n::choose("The bookmark of a folder is damaged. Add the folder again.",
                                    "Закладка папки повреждена. Добавьте папку заново."));
}

PlatformError ofLaterVersion() {
  return PlatformError(
      ENOTSUP, L10n::choose("The bookmark of a folder was made by a later version of the program. "
                            "Update the program, or add the folder again.",
                            "Закладка папки создана более новой версией программы. Обновите "
                            "программу или добавьте папку заново."));
}

FolderIdentity identityIn(std::span<const std::byte> bytes) {
  FolderIdentity identity{.fileSystem = numberAt<std::uint64_t>(bytes, 16),
                          .inode = numberAt<std::uint64_t>(bytes, 24)};
  const auto seconds = static_cast<std::int64_t>(numberAt<std::uint64_t>(bytes, 32));
  const auto nanoseconds = numberAt<std::uint32_t>(bytes, 40);
  if (nanoseconds == unknownBirth && seconds == 0) return identity;
  if (nanoseconds >= nanosecondsInSecond) throw damaged();
  identity.birth = BirthTime{seconds, nanoseconds};
  return identity;
}

}  // namespace

Data FolderBookmark::encode() const {
  Data content;
  append(content, identity.fileSystem);
  append(content, identity.inode);
  append(content, static_cast<std::uint64_t>(identity.birth ? identity.birth->seconds : 0));
  append(content, identity.birth ? identity.birth->nanoseconds : unknownBirth);
  std::ranges::transform(path, std::back_inserter(content),
                         [](char c) { return static_cast<std::byte>(c); });

  Data bytes(signature.begin(), signature.end());
  append(bytes, currentVersion);
  append(bytes, checksum(content));
  bytes.insert(bytes.end(), content.begin(), content.end());
  return bytes;
}

FolderBookmark FolderBookmark::decode(std::span<const std::byte> bytes) {
  if (bytes.size() < checksumStart || !std::ranges::equal(bytes.first(versionStart), signature))
    throw damaged();
  const auto version = numberAt<std::uint32_t>(bytes, versionStart);
  if (version > currentVersion) throw ofLaterVersion();
  if (version != currentVersion || bytes.size() <= pathStart ||
      numberAt<std::uint64_t>(bytes, checksumStart) != checksum(bytes.subspan(contentStart))) {
    throw damaged();
  }
  FolderBookmark bookmark{.path = {}, .identity = identityIn(bytes)};
  std::ranges::transform(bytes.subspan(pathStart), std::back_inserter(bookmark.path),
                         [](std::byte byte) { return static_cast<char>(byte); });
  if (bookmark.path.front() != '/' || bookmark.path.find('\0') != std::string::npos)
    throw damaged();
  return bookmark;
}

}  // namespace kestrivane
