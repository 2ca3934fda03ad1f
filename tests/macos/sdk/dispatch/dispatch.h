// The part of Dispatch that is used here, declared from its public documentation
// (developer.apple.com/documentation/dispatch). In Objective-C its objects are objects that ARC
// counts, in C++ they are plain pointers, as on the system itself.
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __OBJC__
@class NSObject;
#define DISPATCH_OBJECT(name)            \
  @protocol OS_##name                    \
  @end                                   \
  typedef NSObject<OS_##name>* name##_t;
#else
#define DISPATCH_OBJECT(name) typedef struct name##_s* name##_t;
#endif

#ifdef __cplusplus
extern "C" {
#endif

DISPATCH_OBJECT(dispatch_queue)
DISPATCH_OBJECT(dispatch_group)
DISPATCH_OBJECT(dispatch_queue_attr)

#ifdef __OBJC__
/// Any of the objects.
typedef NSObject* dispatch_object_t;
#else
typedef void* dispatch_object_t;
#endif

typedef void (*dispatch_function_t)(void* context);

typedef unsigned int dispatch_qos_class_t;
typedef unsigned int qos_class_t;
enum {
  QOS_CLASS_USER_INITIATED = 0x19,
  QOS_CLASS_BACKGROUND = 0x09,
};

typedef uint64_t dispatch_time_t;
#define DISPATCH_TIME_NOW 0ull
#define DISPATCH_TIME_FOREVER (~0ull)
#define DISPATCH_QUEUE_SERIAL ((dispatch_queue_attr_t)0)

dispatch_queue_t dispatch_get_global_queue(intptr_t identifier, uintptr_t flags);
dispatch_queue_attr_t dispatch_queue_attr_make_with_qos_class(dispatch_queue_attr_t attribute,
                                                              dispatch_qos_class_t qualityOfService,
                                                              int relativePriority);
dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t attribute);
dispatch_group_t dispatch_group_create(void);
void dispatch_group_async_f(dispatch_group_t group, dispatch_queue_t queue, void* context,
                            dispatch_function_t work);
intptr_t dispatch_group_wait(dispatch_group_t group, dispatch_time_t timeout);
#ifndef __OBJC__
void dispatch_release(dispatch_object_t object);
#endif

#ifdef __cplusplus
}
#endif
