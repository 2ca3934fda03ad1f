// The part of AVFoundation that is used here, declared from its public documentation
// (developer.apple.com/documentation/avfoundation).
#pragma once

#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

typedef NSString* AVFileType;
extern const AVFileType AVFileTypeMPEG4;
extern const AVFileType AVFileTypeQuickTimeMovie;
extern const AVFileType AVFileTypeAppleM4V;
extern NSString* const AVAssetExportPresetHighestQuality;

@interface AVAsset : NSObject
@end

@interface AVURLAsset : AVAsset
+ (instancetype)URLAssetWithURL:(NSURL*)url options:(nullable NSDictionary<NSString*, id>*)options;
@end

typedef NSInteger AVAssetExportSessionStatus;
static const AVAssetExportSessionStatus AVAssetExportSessionStatusCompleted = 3;

@interface AVAssetExportSession : NSObject
+ (nullable instancetype)exportSessionWithAsset:(AVAsset*)asset presetName:(NSString*)presetName;
@property(nullable, copy) NSURL* outputURL;
@property(nullable, copy) AVFileType outputFileType;
@property(readonly) AVAssetExportSessionStatus status;
@property(nullable, readonly) NSError* error;
- (void)exportAsynchronouslyWithCompletionHandler:(void (^)(void))handler;
@end

#pragma clang assume_nonnull end
