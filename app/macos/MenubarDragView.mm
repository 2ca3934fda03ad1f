#import "app/macos/MenubarDragView.hpp"

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>
#include <vector>

#include "platform/macos/FoundationBridge.hpp"

using namespace kestrivane;

namespace {

[[noreturn]] void stopProgram(const char* message) {
  std::fprintf(stderr, "%s\n", message);
  std::abort();
}

/// The files on the pasteboard in its order; nothing when it cannot be read as a list of them.
std::optional<std::vector<FileURL>> filesOn(NSPasteboard* pasteboard) {
  NSArray* objects = [pasteboard readObjectsForClasses:@[ [NSURL class] ] options:nil];
  if (objects == nil) return std::nullopt;
  std::vector<FileURL> files;
  for (id object in objects) {
    if (![object isKindOfClass:[NSURL class]]) return std::nullopt;
    // The desktop may name a file by its number; only the path says which one it is.
    NSURL* file = [object filePathURL];
    if (file != nil) files.push_back(fileURL(file));
  }
  return files;
}

}  // namespace

@implementation MenubarDragView {
  std::unique_ptr<DropTarget> _target;
  std::optional<NSTimeInterval> _press;
}

- (instancetype)init {
  self = [super initWithFrame:NSZeroRect];
  if (self != nil) {
    [self registerForDraggedTypes:@[ NSPasteboardTypeFileURL ]];
    self.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
  }
  return self;
}

- (instancetype)initWithFrame:(NSRect)frame {
  stopProgram("Fatal error: MenubarDragView has no initialiser with a frame");
}

- (instancetype)initWithCoder:(NSCoder*)coder {
  stopProgram("Fatal error");
}

- (void)setTarget:(std::unique_ptr<DropTarget>)target {
  _target = std::move(target);
}

#pragma mark - Clicks, which the button below handles

- (NSView*)hitTest:(NSPoint)point {
  return self;
}

- (void)mouseDown:(NSEvent*)event {
  _press = event.timestamp;
  [self.nextResponder mouseDown:event];
}

- (void)mouseUp:(NSEvent*)event {
  [self.nextResponder mouseUp:event];
}

- (void)rightMouseDown:(NSEvent*)event {
  [self.nextResponder rightMouseDown:event];
}

- (void)rightMouseUp:(NSEvent*)event {
  [self.nextResponder rightMouseUp:event];
}

- (std::optional<NSTimeInterval>)takePress {
  return std::exchange(_press, std::nullopt);
}

#pragma mark - Drags

- (NSDragOperation)draggingEntered:(id<NSDraggingInfo>)sender {
  if (!_target) return NSDragOperationNone;
  self.needsDisplay = YES;
  _target->draggingEntered();
  return NSDragOperationCopy;
}

- (void)draggingExited:(id<NSDraggingInfo>)sender {
  if (!_target) return;
  self.needsDisplay = YES;
  _target->draggingExited();
}

- (BOOL)performDragOperation:(id<NSDraggingInfo>)sender {
  if (!_target) return NO;
  self.needsDisplay = YES;
  const bool isAccepted =
      _target->performDragOperation([sender] { return filesOn(sender.draggingPasteboard); });
  return isAccepted ? YES : NO;
}

#pragma mark - Drawing

- (void)drawRect:(NSRect)dirtyRect {
  [super drawRect:dirtyRect];
  const std::optional<DropHighlight> highlight = _target ? _target->highlight() : std::nullopt;
  if (!highlight) return;
  [[NSColor.controlAccentColor colorWithAlphaComponent:highlight->opacity] setFill];
  const CGRect inside = CGRectInset(self.bounds, highlight->inset, highlight->inset);
  [[NSBezierPath bezierPathWithRoundedRect:inside
                                   xRadius:highlight->cornerRadius
                                   yRadius:highlight->cornerRadius] fill];
}

@end
