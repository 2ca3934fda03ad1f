// The menu bar. Thread-safety: for the main thread. Ownership: none; an item leaves the menu bar
// when it is destroyed.
#pragma once

#include "platform/StatusBar.hpp"

namespace kestrivane {

class MacStatusBar final : public StatusBar {
 public:
  std::unique_ptr<StatusItem> makeStatusItem() override;
};

}  // namespace kestrivane
