// The menu bar. Thread-safety: for the main thread. Ownership: none; an item leaves the menu bar
// when it is destroyed.
#pragma once

#include <functional>
#include <utility>

#include "platform/StatusBar.hpp"

namespace kestrivane {

class MacStatusBar final : public StatusBar {
 public:
  /// `isPressSpent` says whether a press of the mouse at that moment, in seconds since the system
  /// started, has done its work already, so that the click on an item does nothing more.
  explicit MacStatusBar(std::function<bool(double press)> isPressSpent)
      : isPressSpent_(std::move(isPressSpent)) {}

  std::unique_ptr<StatusItem> makeStatusItem() override;

 private:
  std::function<bool(double press)> isPressSpent_;
};

}  // namespace kestrivane
