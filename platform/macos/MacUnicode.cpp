#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/Unicode.hpp"
#include "platform/macos/CFReference.hpp"
#include "platform/macos/CFText.hpp"

namespace kestrivane {
namespace {

std::string asciiLowercased(std::string_view text) {
  std::string result(text);
  for (char& c : result)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return result;
}

}  // namespace

std::string lowercased(std::string_view text) {
  const CFReference<CFStringRef> string = makeCFString(text);
  if (!string) return asciiLowercased(text);
  const CFReference<CFMutableStringRef> lower(
      CFStringCreateMutableCopy(kCFAllocatorDefault, 0, string.get()));
  CFStringLowercase(lower.get(), nullptr);
  return textOf(lower.get());
}

}  // namespace kestrivane
