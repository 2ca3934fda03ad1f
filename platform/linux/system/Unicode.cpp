#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/Unicode.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>

#include <unicase.h>
#include <unistr.h>

namespace kestrivane {
namespace {

const std::uint8_t* bytesOf(std::string_view text) {
  return reinterpret_cast<const std::uint8_t*>(text.data());
}

std::string asciiLowercased(std::string_view text) {
  std::string result(text);
  for (char& c : result)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return result;
}

bool isASCII(std::string_view text) {
  for (const char c : text)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

struct FreeDeleter {
  void operator()(void* memory) const { std::free(memory); }
};

/// The bytes at the start of `text` that belong together: a whole character, or the longest start
/// of one that is cut short (its "maximal subpart", the Unicode Standard, section 3.9).
struct Sequence {
  std::size_t length;
  bool isWhole;
};

Sequence firstSequence(std::string_view text) {
  const auto byteAt = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t lead = byteAt(0);
  if (lead < 0x80) return {1, true};
  if (lead < 0xC2 || lead > 0xF4) return {1, false};

  // The second byte has its own bounds after some leads: they keep out longer forms of shorter
  // characters, surrogates, and what lies beyond U+10FFFF (the same section, table 3-7).
  std::uint8_t low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  std::uint8_t high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  for (std::size_t i = 1; i < length; ++i) {
    if (i == text.size() || byteAt(i) < low || byteAt(i) > high) return {i, false};
    low = 0x80;
    high = 0xBF;
  }
  return {length, true};
}

}  // namespace

std::string lowercased(std::string_view text) {
  if (isASCII(text) || u8_check(bytesOf(text), text.size()) != nullptr)
    return asciiLowercased(text);
  std::size_t length = 0;
  const std::unique_ptr<std::uint8_t, FreeDeleter> lower(
      u8_tolower(bytesOf(text), text.size(), nullptr, nullptr, nullptr, &length));
  if (lower == nullptr) throw std::bad_alloc();
  return std::string(reinterpret_cast<const char*>(lower.get()), length);
}

std::string validUTF8(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const auto [length, isWhole] = firstSequence(text);
    result += isWhole ? text.substr(0, length) : "\uFFFD";
    text.remove_prefix(length);
  }
  return result;
}

}  // namespace kestrivane
