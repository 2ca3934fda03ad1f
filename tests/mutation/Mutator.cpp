#include "tests/mutation/Mutator.hpp"

#include <algorithm>
#include <random>

namespace kestrivane::mutation {
namespace {

class Damage {
 public:
  Damage(std::string& content, std::uint64_t seed, std::uint64_t number)
      : content_(content), random_(seed * 0x9E3779B97F4A7C15 + number) {}

  void apply() {
    for (std::uint64_t times = 1 + below(4); times > 0; --times)
      switch (below(4)) {
        case 0:
          cut();
          break;
        case 1:
          repeat();
          break;
        default:
          flip();
      }
  }

 private:
  std::uint64_t below(std::uint64_t limit) { return limit == 0 ? 0 : random_() % limit; }

  /// Half of the places are in the first 512 bytes, where most headers are.
  std::size_t place() {
    return below(2) == 0 ? below(std::min<std::size_t>(content_.size(), 512))
                         : below(content_.size());
  }

  /// Single bits, whole bytes, or bytes that are numbers at the edge.
  void flip() {
    if (content_.empty()) return;
    for (std::uint64_t count = 1 + below(8); count > 0; --count) {
      char& byte = content_[place()];
      switch (below(3)) {
        case 0:
          byte = static_cast<char>(byte ^ (1 << below(8)));
          break;
        case 1:
          byte = static_cast<char>(below(256));
          break;
        default:
          byte = "\x00\x01\x7F\x80\xFF"[below(5)];
      }
    }
  }

  /// The end of the file, or something out of its middle.
  void cut() {
    const std::size_t start = place();
    content_.erase(start, below(2) == 0 ? std::string::npos : below(content_.size() - start + 1));
  }

  /// A part once more, where it stands or elsewhere.
  void repeat() {
    const std::size_t start = place();
    const std::string part = content_.substr(start, 1 + below(4096));
    content_.insert(below(2) == 0 ? start : place(), part);
  }

  std::string& content_;
  std::mt19937_64 random_;
};

}  // namespace

std::string mutated(std::string content, std::uint64_t seed, std::uint64_t number) {
  Damage(content, seed, number).apply();
  return content;
}

}  // namespace kestrivane::mutation
