#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/Base64.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace kestrivane {
namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t bytesInGroup = 3;
constexpr std::size_t charactersInGroup = 4;

}  // namespace

std::string base64(std::span<const std::byte> bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / bytesInGroup * charactersInGroup);
  for (std::size_t start = 0; start < bytes.size(); start += bytesInGroup) {
    const auto group = bytes.subspan(start, std::min(bytesInGroup, bytes.size() - start));
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < bytesInGroup; ++i)
      bits = bits << 8 | (i < group.size() ? std::to_integer<std::uint32_t>(group[i]) : 0);
    for (std::size_t i = 0; i < charactersInGroup; ++i)
      text += i <= group.size() ? alphabet[bits >> (18 - 6 * i) & 0x3F] : '=';
  }
  return text;
}

std::optional<Data> bytesOfBase64(std::string_view text) {
  if (text.size() % charactersInGroup != 0) return std::nullopt;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  Data bytes;
  bytes.reserve(text.size() / charactersInGroup * bytesInGroup);
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isPadding = i >= text.size() - padding;
    const std::size_t value = isPadding ? 0 : alphabet.find(text[i]);
    if (value == std::string_view::npos) return std::nullopt;
    bits = bits << 6 | static_cast<std::uint32_t>(value);
    if (i % charactersInGroup != charactersInGroup - 1) continue;
    for (const int shift : {16, 8, 0})
      bytes.push_back(static_cast<std::byte>(bits >> shift));
  }
  bytes.erase(bytes.end() - static_cast<std::ptrdiff_t>(padding), bytes.end());
  // Bits that stand for no byte have to be zero.
  if (base64(bytes) != text) return std::nullopt;
  return bytes;
}

}  // namespace kestrivane
