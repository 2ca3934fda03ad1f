// The part of NSOpenPanel that is used here, declared from its public documentation
// (developer.apple.com/documentation/appkit/nsopenpanel).
#pragma once

#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

typedef NSInteger NSModalResponse;
static const NSModalResponse NSModalResponseOK = 1;

@interface NSOpenPanel : NSObject
+ (NSOpenPanel*)openPanel;
@property BOOL canChooseFiles;
@property BOOL canChooseDirectories;
@property BOOL allowsMultipleSelection;
@property(nullable, copy) NSString* prompt;
@property(readonly, copy) NSArray<NSURL*>* URLs;
- (NSModalResponse)runModal;
@end

#pragma clang assume_nonnull end
