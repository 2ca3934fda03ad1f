// Looks for newer versions with Sparkle's standard updater. Where it looks and whose signature it
// trusts stand in the application's Info.plist.
//
// Thread-safety: for the main thread. Ownership: owns the updater's controller.
#pragma once

#include <memory>

#include "platform/Updater.hpp"

namespace kestrivane {

class SparkleUpdater final : public Updater {
 public:
  SparkleUpdater();
  ~SparkleUpdater() override;

  void start() override;
  void checkForUpdates() override;

 private:
  struct Native;
  std::unique_ptr<Native> native_;
};

}  // namespace kestrivane
