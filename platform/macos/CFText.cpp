#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/CFText.hpp"

namespace kestrivane {

CFReference<CFStringRef> makeCFString(std::string_view text) {
  return CFReference<CFStringRef>(
      CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                              static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false));
}

std::string textOf(CFStringRef string) {
  const CFRange all{0, CFStringGetLength(string)};
  CFIndex size = 0;
  CFStringGetBytes(string, all, kCFStringEncodingUTF8, 0, false, nullptr, 0, &size);
  std::string text(static_cast<std::size_t>(size), '\0');
  CFStringGetBytes(string, all, kCFStringEncodingUTF8, 0, false,
                   reinterpret_cast<UInt8*>(text.data()), size, nullptr);
  return text;
}

}  // namespace kestrivane
