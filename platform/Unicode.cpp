#include "platform/Unicode.hpp"

#include <cstddef>
#include <cstdint>

namespace kestrivane {
namespace {

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

void appendEscape(std::string& line, unsigned char control) {
  constexpr std::string_view digits = "0123456789abcdef";
  line += "\\x";
  line += digits[control >> 4];
  line += digits[control & 0x0F];
}

}  // namespace

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

std::string printable(std::string_view text) {
  const std::string valid = validUTF8(text);
  std::string line;
  for (std::size_t i = 0; i < valid.size(); ++i) {
    const auto byte = static_cast<unsigned char>(valid[i]);
    const auto next = static_cast<unsigned char>(i + 1 < valid.size() ? valid[i + 1] : 0);
    if (byte == '\n') {
      line += "\\n";
    } else if (byte < 0x20 || byte == 0x7F) {
      appendEscape(line, byte);
    } else if (byte == 0xC2 && next < 0xA0) {  // U+0080 to U+009F: control characters as well
      appendEscape(line, next);
      ++i;
    } else {
      line += valid[i];
    }
  }
  return line;
}

}  // namespace kestrivane
