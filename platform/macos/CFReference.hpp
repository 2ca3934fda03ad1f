// The one owner of references that the system's C libraries count.
//
// It takes the reference of a function with "Create" or "Copy" in its name (Core Foundation's
// ownership policy) and releases it once. What comes from a "Get" function is not owned and is
// never put in here. Thread-safety: like a unique pointer's. Ownership: owns one reference; moves
// only.
#pragma once

#include <memory>
#include <type_traits>

#include <CoreFoundation/CoreFoundation.h>

namespace kestrivane {

struct CFReleaser {
  void operator()(CFTypeRef object) const { CFRelease(object); }
};

/// `Ref` is the pointer type that the system gives the object: `CFReference<CFStringRef>`. Images,
/// contexts and colour spaces are such objects too.
template <typename Ref>
using CFReference = std::unique_ptr<std::remove_pointer_t<Ref>, CFReleaser>;

}  // namespace kestrivane
