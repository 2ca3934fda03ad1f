#include "tests/macos/fakes/FakeCoreFoundation.hpp"

#include <algorithm>

#include <gtest/gtest.h>

using kestrivane::test::fakeSystem;

namespace {

constexpr CFTypeID stringType = 7;
constexpr CFTypeID arrayType = 19;
constexpr CFTypeID numberType = 22;
constexpr CFTypeID otherType = 1;

/// As much of UTF-8 as the tests need: the two bytes that it never has, and ones out of place.
bool isUTF8(const std::string& text) {
  std::size_t following = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0xFE || ((byte & 0xC0) == 0x80) != (following > 0)) return false;
    following = following > 0 ? following - 1 : byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : byte >= 0xC0;
  }
  return following == 0;
}

}  // namespace

CFArrayObject::CFArrayObject(std::vector<CFTypeRef> objects) : values(std::move(objects)) {
  for (const CFTypeRef value : values)
    fakeSystem().retain(value);
}

CFArrayObject::~CFArrayObject() {
  for (const CFTypeRef value : values)
    fakeSystem().release(value);
}

CFDictionaryObject::CFDictionaryObject(std::map<const void*, CFTypeRef> objects)
    : values(std::move(objects)) {
  for (const auto& [key, value] : values)
    fakeSystem().retain(value);
}

CFDictionaryObject::~CFDictionaryObject() {
  for (const auto& [key, value] : values)
    fakeSystem().release(value);
}

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFArrayCallBacks kCFTypeArrayCallBacks = {0};

void CFRelease(CFTypeRef object) {
  fakeSystem().release(object);
}

CFTypeID CFGetTypeID(CFTypeRef object) {
  const auto& found = fakeSystem().object(object);
  if (dynamic_cast<const CFStringObject*>(&found) != nullptr) return stringType;
  if (dynamic_cast<const CFArrayObject*>(&found) != nullptr) return arrayType;
  if (dynamic_cast<const CFNumberObject*>(&found) != nullptr) return numberType;
  return otherType;
}

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex count,
                         const CFArrayCallBacks* callBacks) {
  if (fakeSystem().fails("CFArrayCreate") || callBacks != &kCFTypeArrayCallBacks) return nullptr;
  return fakeSystem().create<CFArrayObject>(std::vector<CFTypeRef>(values, values + count));
}

CFTypeID CFArrayGetTypeID() {
  return arrayType;
}

CFIndex CFArrayGetCount(CFArrayRef array) {
  return static_cast<CFIndex>(array->values.size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  return array->values.at(static_cast<std::size_t>(index));
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex length,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation) {
  if (fakeSystem().fails("CFStringCreateWithBytes")) return nullptr;
  std::string text(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
  if (encoding != kCFStringEncodingUTF8 || isExternalRepresentation || !isUTF8(text))
    return nullptr;
  return fakeSystem().create<CFStringObject>(std::move(text));
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex, CFStringRef string) {
  return fakeSystem().create<CFStringObject>(string->text);
}

/// ASCII and the Cyrillic capitals from U+0410 to U+041F, of two bytes each.
void CFStringLowercase(CFMutableStringRef string, CFLocaleRef locale) {
  EXPECT_EQ(locale, nullptr);
  std::string& text = string->text;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] >= 'A' && text[i] <= 'Z') text[i] = static_cast<char>(text[i] + 0x20);
    const bool isCyrillic = i > 0 && text[i - 1] == '\xD0';
    if (isCyrillic && text[i] >= '\x90' && text[i] <= '\x9F')
      text[i] = static_cast<char>(text[i] + 0x20);
  }
}

CFTypeID CFStringGetTypeID() {
  return stringType;
}

CFIndex CFStringGetLength(CFStringRef string) {
  return std::ranges::count_if(string->text, [](char c) { return (c & 0xC0) != 0x80; });
}

CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding, UInt8,
                         Boolean, UInt8* buffer, CFIndex bufferSize, CFIndex* usedSize) {
  EXPECT_EQ(range.location, 0);
  EXPECT_EQ(range.length, CFStringGetLength(string));
  EXPECT_EQ(encoding, static_cast<CFStringEncoding>(kCFStringEncodingUTF8));
  const auto size = static_cast<CFIndex>(string->text.size());
  if (buffer != nullptr) {
    EXPECT_GE(bufferSize, size);
    std::ranges::copy(string->text, buffer);
  }
  if (usedSize != nullptr) *usedSize = size;
  return range.length;
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
  const auto found = dictionary->values.find(key);
  return found == dictionary->values.end() ? nullptr : found->second;
}

CFTypeID CFNumberGetTypeID() {
  return numberType;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
  EXPECT_EQ(type, static_cast<CFNumberType>(kCFNumberIntType));
  *static_cast<int*>(value) = number->value;
  return 1;
}

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const UInt8* path, CFIndex length,
                                                 Boolean isDirectory) {
  if (fakeSystem().fails("CFURLCreateFromFileSystemRepresentation")) return nullptr;
  return fakeSystem().create<CFURLObject>(
      std::string(reinterpret_cast<const char*>(path), static_cast<std::size_t>(length)),
      isDirectory != 0);
}
