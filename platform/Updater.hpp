// Looks for newer versions of the program.
//
// Thread-safety: for the main thread; operations return without waiting for the network.
#pragma once

namespace kestrivane {

class Updater {
 public:
  Updater() = default;
  Updater(const Updater&) = delete;
  Updater& operator=(const Updater&) = delete;
  virtual ~Updater() = default;

  /// Begins the checks that are made by themselves, if there are any. Called once.
  virtual void start() = 0;

  /// Checks now and tells the user the outcome, whatever it is.
  virtual void checkForUpdates() = 0;
};

}  // namespace kestrivane
