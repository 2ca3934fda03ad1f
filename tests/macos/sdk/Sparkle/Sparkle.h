// What the application uses of Sparkle 2, declared from its public reference. Nothing here is
// linked.
#pragma once

#import <Foundation/Foundation.h>

@protocol SPUUpdaterDelegate;
@protocol SPUStandardUserDriverDelegate;

@interface SPUStandardUpdaterController : NSObject
- (instancetype)initWithStartingUpdater:(BOOL)startUpdater
                        updaterDelegate:(id<SPUUpdaterDelegate>)updaterDelegate
                     userDriverDelegate:(id<SPUStandardUserDriverDelegate>)userDriverDelegate;
- (void)checkForUpdates:(id)sender;
@end
