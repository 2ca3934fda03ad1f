// The button of a status item in the menu bar.
//
// Thread-safety: for the main thread. Ownership: shares the button with its item; owns the drop
// target and the receiver of clicks.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/StatusBar.hpp"

@class StatusButtonTarget;

namespace kestrivane {

class MacStatusBarButton final : public StatusBarButton {
 public:
  explicit MacStatusBarButton(NSStatusBarButton* button);
  ~MacStatusBarButton() override;

  void setImage(const StatusImage& image) override;
  void setAlphaValue(double alpha) override;
  void setAction(std::function<void()> action) override;
  void setDropTarget(std::unique_ptr<DropTarget> target) override;

  /// The view that a popover hangs from.
  NSStatusBarButton* view() const { return button_; }

 private:
  NSStatusBarButton* button_;
  StatusButtonTarget* target_ = nil;  ///< which the button itself refers to weakly
};

}  // namespace kestrivane
