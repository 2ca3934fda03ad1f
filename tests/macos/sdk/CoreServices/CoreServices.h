// The part of CoreServices (FSEvents) that is used here, declared from its public documentation
// (developer.apple.com/documentation/coreservices/file_system_events).
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>

CF_DECLARATIONS_BEGIN

typedef UInt32 FSEventStreamCreateFlags;
typedef UInt32 FSEventStreamEventFlags;
typedef UInt64 FSEventStreamEventId;
typedef struct FSEventStreamObject* FSEventStreamRef;
typedef const struct FSEventStreamObject* ConstFSEventStreamRef;

typedef const void* (*CFAllocatorRetainCallBack)(const void* info);
typedef void (*CFAllocatorReleaseCallBack)(const void* info);
typedef CFStringRef (*CFAllocatorCopyDescriptionCallBack)(const void* info);

struct FSEventStreamContext {
  CFIndex version;
  void* info;
  CFAllocatorRetainCallBack retain;
  CFAllocatorReleaseCallBack release;
  CFAllocatorCopyDescriptionCallBack copyDescription;
};
typedef struct FSEventStreamContext FSEventStreamContext;

typedef void (*FSEventStreamCallback)(ConstFSEventStreamRef stream, void* info, size_t eventCount,
                                      void* eventPaths, const FSEventStreamEventFlags* eventFlags,
                                      const FSEventStreamEventId* eventIds);

FSEventStreamEventId FSEventsGetCurrentEventId(void);
FSEventStreamRef FSEventStreamCreate(CFAllocatorRef allocator, FSEventStreamCallback callback,
                                     FSEventStreamContext* context, CFArrayRef pathsToWatch,
                                     FSEventStreamEventId sinceWhen, CFTimeInterval latency,
                                     FSEventStreamCreateFlags flags);
void FSEventStreamSetDispatchQueue(FSEventStreamRef stream, dispatch_queue_t queue);
Boolean FSEventStreamStart(FSEventStreamRef stream);
void FSEventStreamStop(FSEventStreamRef stream);
void FSEventStreamInvalidate(FSEventStreamRef stream);
void FSEventStreamRelease(FSEventStreamRef stream);

CF_DECLARATIONS_END
