#include "cli/LineWriter.hpp"

#include <cerrno>
#include <string>

#include <unistd.h>

#include "platform/Unicode.hpp"

namespace kestrivane {
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
