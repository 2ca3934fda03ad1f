#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/Unicode.hpp"
#include "platform/macos/CFReference.hpp"
#include "platform/macos/CFText.hpp"

namespace kestrivane {

std::string lowercased(std::string_view text) {
  const CFReference<CFStringRef> string = makeCFString(text);
  if (!string) return asciiLowercased(text);
  const CFReference<CFMutableStringRef> lower(
      CFStringCreateMutableCopy(kCFAllocatorDefault, 0, string.get()));
  CFStringLowercase(lower.get(), nullptr);
  return textOf(lower.get());
}

}  // namespace kestrivane
