// The open panel of the system. Thread-safety: for the main thread.
#pragma once

#include "platform/OpenPanel.hpp"

namespace kestrivane {

class MacOpenPanel final : public OpenPanel {
 public:
  /// What is chosen can be read by this process until it ends, in a sandbox too.
  OpenPanelResult runModal(const OpenPanelConfiguration& configuration) override;
};

}  // namespace kestrivane
