#include "cli/LineWriter.hpp"

#include <cerrno>

#include <unistd.h>

#include "platform/Unicode.hpp"

namespace kestrivane {
namespace {

void appendEscape(std::string& line, unsigned char control) {
  constexpr std::string_view digits = "0123456789abcdef";
  line += "\\x";
  line += digits[control >> 4];
  line += digits[control & 0x0F];
}

}  // namespace

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

void LineWriter::writeLine(std::string_view text) {
  const std::string line = printable(text) + '\n';
  const std::lock_guard lock(mutex_);
  std::string_view rest = line;
  while (!rest.empty()) {
    const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
    if (written < 0 && errno != EINTR) return;
    if (written > 0) rest.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace kestrivane
