// The part of ImageIO that is used here, declared from its public documentation
// (developer.apple.com/documentation/imageio).
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>

CF_DECLARATIONS_BEGIN

typedef struct CGImageSource* CGImageSourceRef;
typedef struct CGImageDestination* CGImageDestinationRef;

enum CGImageSourceStatus : int32_t {
  kCGImageStatusUnexpectedEOF = -5,
  kCGImageStatusInvalidData = -4,
  kCGImageStatusUnknownType = -3,
  kCGImageStatusReadingHeader = -2,
  kCGImageStatusIncomplete = -1,
  kCGImageStatusComplete = 0,
};
typedef enum CGImageSourceStatus CGImageSourceStatus;

extern const CFStringRef kCGImagePropertyOrientation;

CGImageSourceRef CGImageSourceCreateWithURL(CFURLRef url, CFDictionaryRef options);
CGImageRef CGImageSourceCreateImageAtIndex(CGImageSourceRef source, size_t index,
                                           CFDictionaryRef options);
CGImageSourceStatus CGImageSourceGetStatusAtIndex(CGImageSourceRef source, size_t index);
CFDictionaryRef CGImageSourceCopyPropertiesAtIndex(CGImageSourceRef source, size_t index,
                                                   CFDictionaryRef options);

CGImageDestinationRef CGImageDestinationCreateWithURL(CFURLRef url, CFStringRef type, size_t count,
                                                      CFDictionaryRef options);
void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image,
                                CFDictionaryRef properties);
bool CGImageDestinationFinalize(CGImageDestinationRef destination);

CF_DECLARATIONS_END
