#include "app/macos/MacStatusBar.hpp"

#include <optional>

#import <AppKit/AppKit.h>

#import "app/macos/MacStatusBarButton.hpp"

namespace kestrivane {
namespace {

class MacStatusItem final : public StatusItem {
 public:
  explicit MacStatusItem(const MacStatusBarButton::IsPressSpent& isPressSpent)
      : item_([NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength]) {
    if (item_.button != nil) button_.emplace(item_.button, isPressSpent);
  }

  ~MacStatusItem() override { [NSStatusBar.systemStatusBar removeStatusItem:item_]; }

  StatusBarButton* button() override { return button_ ? &*button_ : nullptr; }

 private:
  NSStatusItem* item_;
  std::optional<MacStatusBarButton> button_;
};

}  // namespace

std::unique_ptr<StatusItem> MacStatusBar::makeStatusItem() {
  return std::make_unique<MacStatusItem>(isPressSpent_);
}

}  // namespace kestrivane
