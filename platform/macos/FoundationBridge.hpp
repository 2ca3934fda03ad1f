// Between the values of the core and the objects of Foundation, and the one mapper from `NSError`.
//
// For Objective-C++ sources only. Thread-safety: pure functions; may be called from any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>

#import <Foundation/Foundation.h>

#include "platform/Data.hpp"
#include "platform/FileURL.hpp"
#include "platform/PlatformError.hpp"

namespace kestrivane {

/// The URL of the same path, byte for byte.
NSURL* nsURL(const FileURL& url);

/// The path of a file URL, without a "/" at its end.
FileURL fileURL(NSURL* url);

/// Bytes that are no valid UTF-8 are replaced by U+FFFD.
NSString* nsString(std::string_view text);

/// As UTF-8; empty for nil.
std::string text(NSString* string);

NSData* nsData(std::span<const std::byte> bytes);
Data data(NSData* data);

/// The code and the system's own description, which is in the user's language.
PlatformError platformError(NSError* error);

}  // namespace kestrivane
