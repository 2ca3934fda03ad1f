// The running program as AppKit has it. The Qt application object, which runs AppKit's event loop,
// outlives it.
//
// Thread-safety: for the main thread. Ownership: none.
#pragma once

#include "platform/Application.hpp"

namespace kestrivane {

class MacApplication final : public Application {
 public:
  void setActivationPolicy(ActivationPolicy policy) override;
  void terminate() override;
};

}  // namespace kestrivane
