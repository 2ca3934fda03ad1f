// The view over the status item's button: takes drags of files for a drop target, draws the
// target's highlight, and hands every click on to the button below.
//
// Thread-safety: for the main thread, like every view. Ownership: the button that it lies in holds
// it; it owns its target.
#pragma once

#include <memory>
#include <optional>

#import <AppKit/AppKit.h>

#include "platform/StatusBar.hpp"

@interface MenubarDragView : NSView

/// The only initialiser; the owner sets the frame and the target afterwards.
- (instancetype)init;
- (instancetype)initWithFrame:(NSRect)frame NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

/// What is told of drags; without one they are refused.
- (void)setTarget:(std::unique_ptr<kestrivane::DropTarget>)target;

/// When the button of the mouse went down here last, in seconds since the system started; nothing
/// when that press was taken before.
- (std::optional<NSTimeInterval>)takePress;

@end
