// The part of CoreFoundation that is used here, declared from its public documentation
// (developer.apple.com/documentation/corefoundation), so that the macOS sources can be checked on
// other systems. It is never used on macOS itself.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
#define CF_DECLARATIONS_BEGIN extern "C" {
#define CF_DECLARATIONS_END }
#else
#define CF_DECLARATIONS_BEGIN
#define CF_DECLARATIONS_END
#endif

CF_DECLARATIONS_BEGIN

typedef const void* CFTypeRef;
typedef long CFIndex;
typedef unsigned char Boolean;
typedef unsigned char UInt8;
typedef uint32_t UInt32;
typedef uint64_t UInt64;
typedef unsigned long CFTypeID;
typedef double CFTimeInterval;

typedef const struct CFAllocatorObject* CFAllocatorRef;
typedef const struct CFArrayObject* CFArrayRef;
typedef const struct CFDictionaryObject* CFDictionaryRef;
typedef const struct CFLocaleObject* CFLocaleRef;
typedef const struct CFNumberObject* CFNumberRef;
typedef const struct CFStringObject* CFStringRef;
typedef struct CFStringObject* CFMutableStringRef;
typedef const struct CFURLObject* CFURLRef;

typedef struct {
  CFIndex location;
  CFIndex length;
} CFRange;

typedef uint32_t CFStringEncoding;
enum { kCFStringEncodingUTF8 = 0x08000100 };

/// Only ever passed on by its address.
typedef struct {
  CFIndex version;
} CFArrayCallBacks;
extern const CFArrayCallBacks kCFTypeArrayCallBacks;
extern const CFAllocatorRef kCFAllocatorDefault;

void CFRelease(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);

CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex count,
                         const CFArrayCallBacks* callBacks);
CFTypeID CFArrayGetTypeID(void);
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);

CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation);
CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef allocator, CFIndex maximumLength,
                                             CFStringRef string);
void CFStringLowercase(CFMutableStringRef string, CFLocaleRef locale);
CFTypeID CFStringGetTypeID(void);
CFIndex CFStringGetLength(CFStringRef string);
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding,
                         UInt8 lossByte, Boolean isExternalRepresentation, UInt8* buffer,
                         CFIndex bufferSize, CFIndex* usedSize);

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);

typedef CFIndex CFNumberType;
enum { kCFNumberIntType = 9 };
CFTypeID CFNumberGetTypeID(void);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8* path,
                                                 CFIndex length, Boolean isDirectory);

CF_DECLARATIONS_END
