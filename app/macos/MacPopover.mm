#include "app/macos/MacPopover.hpp"

#include <functional>
#include <utility>

#import <AppKit/AppKit.h>

#import "app/macos/MacStatusBarButton.hpp"

/// Is told when the popover closes, which a click outside of it does too.
@interface PopoverObserver : NSObject <NSPopoverDelegate>
- (instancetype)initWithHandler:(std::function<void()>)didClose;
/// When it began to close last, in seconds since the system started; negative before.
@property(readonly) NSTimeInterval closingTime;
@end

@implementation PopoverObserver {
  std::function<void()> _didClose;
}

- (instancetype)initWithHandler:(std::function<void()>)didClose {
  self = [super init];
  if (self != nil) {
    _didClose = std::move(didClose);
    _closingTime = -1;
  }
  return self;
}

- (void)popoverWillClose:(NSNotification*)notification {
  _closingTime = NSProcessInfo.processInfo.systemUptime;
}

- (void)popoverDidClose:(NSNotification*)notification {
  _didClose();
}

@end

namespace kestrivane {

struct MacPopover::Native {
  NSPopover* popover = [[NSPopover alloc] init];
  PopoverObserver* observer = nil;  ///< which the popover itself refers to weakly
};

MacPopover::MacPopover(QuickContent::ItemFactory makeItem)
    : makeItem_(std::move(makeItem)), native_(std::make_unique<Native>()) {
  native_->observer = [[PopoverObserver alloc] initWithHandler:[this] {
    if (content_) content_->hide();
  }];
  native_->popover.delegate = native_->observer;
}

MacPopover::~MacPopover() {
  native_->popover.delegate = nil;
  [native_->popover close];
}

void MacPopover::setContentSize(PopoverSize size) {
  native_->popover.contentSize = NSMakeSize(size.width, size.height);
}

void MacPopover::setBehavior(PopoverBehavior behavior) {
  native_->popover.behavior = behavior == PopoverBehavior::transient
                                  ? NSPopoverBehaviorTransient
                                  : NSPopoverBehaviorApplicationDefined;
}

bool MacPopover::isShown() const {
  return native_->popover.isShown;
}

void MacPopover::showRelativeTo(StatusBarButton& button) {
  if (!content_) makeContent();
  content_->show();
  NSView* view = static_cast<MacStatusBarButton&>(button).view();
  [native_->popover showRelativeToRect:view.bounds ofView:view preferredEdge:NSRectEdgeMinY];
}

void MacPopover::makeKey() {
  NSWindow* window = native_->popover.contentViewController.view.window;
  [window makeKeyWindow];
  if (content_) [window makeFirstResponder:(__bridge NSView*)content_->view()];
}

void MacPopover::performClose() {
  [native_->popover performClose:nil];
}

bool MacPopover::hasClosedSince(double time) const {
  return native_->observer.closingTime >= time;
}

void MacPopover::makeContent() {
  const NSSize size = native_->popover.contentSize;
  NSView* view = [[NSView alloc] initWithFrame:NSMakeRect(0, 0, size.width, size.height)];
  content_ = std::make_unique<QuickContent>(
      makeItem_, (__bridge void*)view, static_cast<int>(size.width), static_cast<int>(size.height));
  NSViewController* controller = [[NSViewController alloc] init];
  controller.view = view;
  native_->popover.contentViewController = controller;
  native_->popover.contentSize = size;  // a new controller may bring its own
}

}  // namespace kestrivane
