// Whole lines on standard output. Thread-safety: lines may be written from any thread; each is
// written at once and never mixed with another. Ownership: refers to the descriptor.
#pragma once

#include <mutex>
#include <string_view>

namespace kestrivane {

class LineWriter {
 public:
  explicit LineWriter(int descriptor) : descriptor_(descriptor) {}

  /// Writes `text` as one printable line (see `printable`). A reader that has gone is no reason to
  /// stop working: failures are not reported.
  void writeLine(std::string_view text);

 private:
  std::mutex mutex_;
  int descriptor_;
};

}  // namespace kestrivane
