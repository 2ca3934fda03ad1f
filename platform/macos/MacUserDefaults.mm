#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacUserDefaults.hpp"

#include "platform/macos/FoundationBridge.hpp"

namespace kestrivane {

void MacUserDefaults::registerDefault(std::string_view key, bool value) {
  @autoreleasepool {
    [NSUserDefaults.standardUserDefaults
        registerDefaults:@{nsString(key) : [NSNumber numberWithBool:value]}];
  }
}

bool MacUserDefaults::boolForKey(std::string_view key) const {
  @autoreleasepool {
    return [NSUserDefaults.standardUserDefaults boolForKey:nsString(key)];
  }
}

void MacUserDefaults::setBool(std::string_view key, bool value) {
  @autoreleasepool {
    [NSUserDefaults.standardUserDefaults setBool:value forKey:nsString(key)];
  }
}

std::optional<std::vector<Data>> MacUserDefaults::dataArrayForKey(std::string_view key) const {
  @autoreleasepool {
    NSArray* const array = [NSUserDefaults.standardUserDefaults arrayForKey:nsString(key)];
    if (array == nil) return std::nullopt;
    std::vector<Data> result;
    for (id element in array) {
      if (![element isKindOfClass:[NSData class]]) return std::nullopt;
      result.push_back(data(element));
    }
    return result;
  }
}

void MacUserDefaults::setDataArray(std::string_view key, const std::vector<Data>& value) {
  @autoreleasepool {
    NSMutableArray<NSData*>* const array = [NSMutableArray arrayWithCapacity:value.size()];
    for (const Data& element : value)
      [array addObject:nsData(element)];
    [NSUserDefaults.standardUserDefaults setObject:array forKey:nsString(key)];
  }
}

}  // namespace kestrivane
