#ifndef __linux__
#error "This adapter is for Linux."
#endif
#include "platform/linux/updates/VersionOrder.hpp"

#include <algorithm>

namespace kestrivane {
namespace {

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

bool isLetter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

/// A run of digits without leading zeros, so "" is the number 0 and a part that is not there; or a
/// run of letters.
struct Part {
  std::string_view text;
  bool isWord = false;
};

Part takePart(std::string_view& version) {
  const auto begin =
      std::ranges::find_if(version, [](char c) { return isDigit(c) || isLetter(c); });
  version.remove_prefix(static_cast<std::size_t>(begin - version.begin()));
  if (version.empty()) return {};
  const bool isWord = isLetter(version.front());
  const auto end = std::ranges::find_if_not(version, isWord ? isLetter : isDigit);
  Part part{version.substr(0, static_cast<std::size_t>(end - version.begin())), isWord};
  version.remove_prefix(part.text.size());
  if (!isWord)
    part.text.remove_prefix(std::min(part.text.find_first_not_of('0'), part.text.size()));
  return part;
}

}  // namespace

std::weak_ordering compareVersions(std::string_view left, std::string_view right) {
  while (!left.empty() || !right.empty()) {
    const Part a = takePart(left);
    const Part b = takePart(right);
    if (a.isWord != b.isWord)
      return a.isWord ? std::weak_ordering::less : std::weak_ordering::greater;
    if (!a.isWord && a.text.size() != b.text.size()) return a.text.size() <=> b.text.size();
    if (const auto order = a.text <=> b.text; order != 0) return order;
  }
  return std::weak_ordering::equivalent;
}

}  // namespace kestrivane
