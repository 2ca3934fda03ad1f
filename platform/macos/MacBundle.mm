#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacBundle.hpp"

#include "platform/macos/FoundationBridge.hpp"

namespace kestrivane {
namespace {

std::optional<FileURL> optionalURL(NSURL* url) {
  if (url == nil) return std::nullopt;
  return fileURL(url);
}

}  // namespace

std::optional<FileURL> MacBundle::auxiliaryExecutable(std::string_view name) const {
  @autoreleasepool {
    return optionalURL([NSBundle.mainBundle URLForAuxiliaryExecutable:nsString(name)]);
  }
}

std::optional<FileURL> MacBundle::resource(std::string_view name) const {
  @autoreleasepool {
    return optionalURL([NSBundle.mainBundle URLForResource:nsString(name) withExtension:nil]);
  }
}

}  // namespace kestrivane
