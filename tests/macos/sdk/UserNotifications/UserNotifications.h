// The part of UserNotifications that is used here, declared from its public documentation
// (developer.apple.com/documentation/usernotifications).
#pragma once

#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

typedef NSUInteger UNAuthorizationOptions;
static const UNAuthorizationOptions UNAuthorizationOptionSound = 1 << 1;
static const UNAuthorizationOptions UNAuthorizationOptionAlert = 1 << 2;

@interface UNNotificationSound : NSObject
@property(class, readonly, copy) UNNotificationSound* defaultSound;
@end

@interface UNNotificationContent : NSObject
@end

@interface UNMutableNotificationContent : UNNotificationContent
@property(copy) NSString* title;
@property(copy) NSString* body;
@property(nullable, copy) UNNotificationSound* sound;
@end

@interface UNNotificationTrigger : NSObject
@end

@interface UNNotificationRequest : NSObject
+ (instancetype)requestWithIdentifier:(NSString*)identifier
                              content:(UNNotificationContent*)content
                              trigger:(nullable UNNotificationTrigger*)trigger;
@end

@interface UNUserNotificationCenter : NSObject
+ (UNUserNotificationCenter*)currentNotificationCenter;
- (void)requestAuthorizationWithOptions:(UNAuthorizationOptions)options
                      completionHandler:(void (^)(BOOL granted, NSError* _Nullable error))handler;
- (void)addNotificationRequest:(UNNotificationRequest*)request
         withCompletionHandler:(nullable void (^)(NSError* _Nullable error))handler;
@end

#pragma clang assume_nonnull end
