// The application: its adapters, the view model and the delegate, wired together.
//
// Thread-safety: for the main thread, after the Qt application object was made and before it goes.
// Ownership: owns everything that the program is made of.
#pragma once

#include <memory>
#include <vector>

#include "platform/FileURL.hpp"

namespace kestrivane {

class KestrivaneApp {
 public:
  KestrivaneApp();
  KestrivaneApp(const KestrivaneApp&) = delete;
  KestrivaneApp& operator=(const KestrivaneApp&) = delete;
  ~KestrivaneApp();

  /// Launches, adds `folders` to those that are watched, and runs until the user quits; conversions
  /// under way are let finish. When the user does not wait for them the process ends inside of this
  /// call. When another instance runs in this session, hands over to it and returns at once.
  /// Returns the exit status.
  int run(std::vector<FileURL> folders);

 private:
  class Program;
  std::unique_ptr<Program> program_;
};

}  // namespace kestrivane
