#include "app/macos/MacStatusBar.hpp"

#import <AppKit/AppKit.h>

#import "app/macos/MacStatusBarButton.hpp"

namespace kestrivane {
namespace {

class MacStatusItem final : public StatusItem {
 public:
  MacStatusItem()
      : item_([NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength]) {
    if (item_.button != nil) button_.emplace(item_.button);
  }

  ~MacStatusItem() override { [NSStatusBar.systemStatusBar removeStatusItem:item_]; }

  StatusBarButton* button() override { return button_ ? &*button_ : nullptr; }

 private:
  NSStatusItem* item_;
  std::optional<MacStatusBarButton> button_;
};

}  // namespace

std::unique_ptr<StatusItem> MacStatusBar::makeStatusItem() {
  return std::make_unique<MacStatusItem>();
}

}  // namespace kestrivane
