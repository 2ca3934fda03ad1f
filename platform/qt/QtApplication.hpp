// The running program as Qt has it. The Qt application object outlives it.
//
// Thread-safety: for the main thread.
#pragma once

#include <QCoreApplication>
#include <QGuiApplication>

#include "platform/Application.hpp"

namespace kestrivane {

class QtApplication final : public Application {
 public:
  /// An accessory goes on when its last window is closed.
  void setActivationPolicy(ActivationPolicy policy) override {
    QGuiApplication::setQuitOnLastWindowClosed(policy == ActivationPolicy::regular);
  }

  void terminate() override { QCoreApplication::quit(); }
};

}  // namespace kestrivane
