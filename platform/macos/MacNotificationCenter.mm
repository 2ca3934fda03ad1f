#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacNotificationCenter.hpp"

#import <UserNotifications/UserNotifications.h>

#include "platform/macos/FoundationBridge.hpp"

namespace kestrivane {
namespace {

static_assert(authorizationSound == UNAuthorizationOptionSound);
static_assert(authorizationAlert == UNAuthorizationOptionAlert);

std::exception_ptr exceptionFrom(NSError* error) {
  return error == nil ? nullptr : std::make_exception_ptr(platformError(error));
}

}  // namespace

void MacNotificationCenter::requestAuthorization(std::uint32_t options,
                                                 AuthorizationHandler handler) {
  @autoreleasepool {
    [UNUserNotificationCenter.currentNotificationCenter
        requestAuthorizationWithOptions:options
                      completionHandler:^(BOOL granted, NSError* error) {
                        if (handler) handler(granted, exceptionFrom(error));
                      }];
  }
}

void MacNotificationCenter::add(NotificationRequest request, AddHandler handler) {
  @autoreleasepool {
    UNMutableNotificationContent* const content = [[UNMutableNotificationContent alloc] init];
    content.title = nsString(request.title);
    content.body = nsString(request.body);
    if (request.sound == NotificationSound::standard)
      content.sound = UNNotificationSound.defaultSound;
    UNNotificationRequest* const notification =
        [UNNotificationRequest requestWithIdentifier:nsString(request.identifier)
                                             content:content
                                             trigger:nil];
    [UNUserNotificationCenter.currentNotificationCenter addNotificationRequest:notification
                                                         withCompletionHandler:^(NSError* error) {
                                                           if (handler)
                                                             handler(exceptionFrom(error));
                                                         }];
  }
}

}  // namespace kestrivane
