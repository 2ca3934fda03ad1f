// The popover under the menu bar: the system's own, with a Qt Quick item as its content.
//
// Thread-safety: for the main thread. Ownership: owns the content, which is made when it is first
// shown, since it takes memory.
#pragma once

#include <memory>

#include "app/macos/QuickContent.hpp"
#include "platform/Popover.hpp"

namespace kestrivane {

class MacPopover final : public Popover {
 public:
  explicit MacPopover(QuickContent::ItemFactory makeItem);
  ~MacPopover() override;

  void setContentSize(PopoverSize size) override;
  void setBehavior(PopoverBehavior behavior) override;
  bool isShown() const override;
  /// `button` is one of this system's menu bar.
  void showRelativeTo(StatusBarButton& button) override;
  void makeKey() override;
  void performClose() override;

  /// Whether it has begun to close at `time`, in seconds since the system started, or later: the
  /// press that closed it from outside is not to open it again.
  bool hasClosedSince(double time) const;

 private:
  void makeContent();

  struct Native;
  QuickContent::ItemFactory makeItem_;
  std::unique_ptr<Native> native_;
  std::unique_ptr<QuickContent> content_;
};

}  // namespace kestrivane
