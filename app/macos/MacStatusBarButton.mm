#import "app/macos/MacStatusBarButton.hpp"

#include <functional>
#include <utility>

#import "app/macos/MenubarDragView.hpp"
#include "platform/macos/FoundationBridge.hpp"

/// The receiver of the button's action message.
@interface StatusButtonTarget : NSObject
- (instancetype)initWithAction:(std::function<void()>)action;
- (void)togglePopover;
@end

@implementation StatusButtonTarget {
  std::function<void()> _action;
}

- (instancetype)initWithAction:(std::function<void()>)action {
  self = [super init];
  if (self != nil) _action = std::move(action);
  return self;
}

- (void)togglePopover {
  _action();
}

@end

namespace kestrivane {
namespace {

/// `image` in a square of `side` points: its whole extent, drawn over what is transparent.
NSImage* drawnInto(double side, NSImage* image) {
  NSImage* drawn = [[NSImage alloc] initWithSize:NSMakeSize(side, side)];
  [drawn lockFocus];
  [image drawInRect:NSMakeRect(0, 0, side, side)
           fromRect:NSMakeRect(0, 0, image.size.width, image.size.height)
          operation:NSCompositingOperationSourceOver
           fraction:1];
  [drawn unlockFocus];
  return drawn;
}

/// Nil when there is none of that name.
NSImage* load(const StatusImage& image) {
  NSString* name = nsString(image.name);
  NSImage* loaded =
      image.source == StatusImage::Source::symbol
          ? [NSImage imageWithSystemSymbolName:name
                      accessibilityDescription:nsString(image.accessibilityDescription)]
          : [NSImage imageNamed:name];
  return loaded != nil && image.side ? drawnInto(*image.side, loaded) : loaded;
}

}  // namespace

MacStatusBarButton::MacStatusBarButton(NSStatusBarButton* button, IsPressSpent isPressSpent)
    : button_(button), isPressSpent_(std::move(isPressSpent)) {}

MacStatusBarButton::~MacStatusBarButton() {
  button_.target = nil;
  [dragView_ removeFromSuperview];
  [dragView_ setTarget:nullptr];  // the view itself may stay until a pool is drained
}

void MacStatusBarButton::setImage(const StatusImage& image) {
  NSImage* loaded = load(image);
  if (loaded == nil) return;
  if (image.rendering == StatusImage::Rendering::tinted) [loaded setTemplate:YES];
  button_.image = loaded;
}

void MacStatusBarButton::setAlphaValue(double alpha) {
  button_.alphaValue = alpha;
}

void MacStatusBarButton::setAction(std::function<void()> action) {
  target_ = [[StatusButtonTarget alloc]
      initWithAction:[this, action = std::move(action)] { click(action); }];
  button_.action = @selector(togglePopover);
  button_.target = target_;
}

void MacStatusBarButton::setDropTarget(std::unique_ptr<DropTarget> target) {
  dragView_ = [[MenubarDragView alloc] init];
  dragView_.frame = button_.bounds;
  [dragView_ setTarget:std::move(target)];
  [button_ addSubview:dragView_];
}

void MacStatusBarButton::click(const std::function<void()>& action) {
  // Without a press the click came from the keyboard or an assistive program.
  const std::optional<double> press =
      dragView_ != nil ? [dragView_ takePress] : std::optional<double>();
  if (!press || !isPressSpent_(*press)) action();
}

}  // namespace kestrivane
