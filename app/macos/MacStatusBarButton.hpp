// The button of a status item in the menu bar.
//
// Thread-safety: for the main thread. Ownership: shares the button with its item; owns the view
// over it, with the drop target, and the receiver of clicks.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/StatusBar.hpp"

@class MenubarDragView, StatusButtonTarget;

namespace kestrivane {

class MacStatusBarButton final : public StatusBarButton {
 public:
  /// Whether a press of the mouse at that moment, in seconds since the system started, has done its
  /// work already, so that the click does nothing more.
  using IsPressSpent = std::function<bool(double press)>;

  MacStatusBarButton(NSStatusBarButton* button, IsPressSpent isPressSpent);
  ~MacStatusBarButton() override;

  void setImage(const StatusImage& image) override;
  void setAlphaValue(double alpha) override;
  void setAction(std::function<void()> action) override;
  void setDropTarget(std::unique_ptr<DropTarget> target) override;

  /// The view that a popover hangs from.
  NSStatusBarButton* view() const { return button_; }

 private:
  void click(const std::function<void()>& action);

  NSStatusBarButton* button_;
  IsPressSpent isPressSpent_;
  MenubarDragView* dragView_ = nil;
  StatusButtonTarget* target_ = nil;  ///< which the button itself refers to weakly
};

}  // namespace kestrivane
