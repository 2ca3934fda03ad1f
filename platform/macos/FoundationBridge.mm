#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/FoundationBridge.hpp"

#include "platform/Unicode.hpp"

namespace kestrivane {

NSURL* nsURL(const FileURL& url) {
  return [NSURL fileURLWithFileSystemRepresentation:url.path().c_str()
                                        isDirectory:NO
                                      relativeToURL:nil];
}

// `path` keeps the composition of accented letters, which the file system representation changes.
FileURL fileURL(NSURL* url) {
  NSString* const path = url.path;
  return FileURL(path != nil ? text(path) : std::string(url.fileSystemRepresentation));
}

NSString* nsString(std::string_view text) {
  const std::string valid = validUTF8(text);
  return [[NSString alloc] initWithBytes:valid.data()
                                  length:valid.size()
                                encoding:NSUTF8StringEncoding];
}

std::string text(NSString* string) {
  const char* const characters = string.UTF8String;
  return characters != nullptr ? characters : "";
}

NSData* nsData(std::span<const std::byte> bytes) {
  return [NSData dataWithBytes:bytes.data() length:bytes.size()];
}

Data data(NSData* data) {
  const auto* const first = static_cast<const std::byte*>(data.bytes);
  return Data(first, first + data.length);
}

PlatformError platformError(NSError* error) {
  return PlatformError(static_cast<int>(error.code), text(error.localizedDescription));
}

}  // namespace kestrivane
