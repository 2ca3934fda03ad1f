#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/Locale.hpp"
#include "platform/macos/FoundationBridge.hpp"

namespace kestrivane {

std::optional<std::string> currentLanguageCode() {
  @autoreleasepool {
    std::string code = text(NSLocale.currentLocale.languageCode);
    if (code.empty()) return std::nullopt;
    return code;
  }
}

}  // namespace kestrivane
