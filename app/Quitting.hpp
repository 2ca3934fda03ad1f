// The way out of the program: nothing is watched any more, and the conversions under way are let
// finish, unless the user asks a second time.
//
// Thread-safety: for the main thread. Ownership: refers to what it is made with, which outlives it.
#pragma once

#include "async/EventLoop.hpp"
#include "async/TaskScope.hpp"
#include "platform/Application.hpp"
#include "platform/Popover.hpp"
#include "state/AppViewModel.hpp"

namespace kestrivane {

class Quitting {
 public:
  struct Services {
    Application& application;
    Popover& popover;
    AppViewModel& viewModel;
    EventLoop& loop;
    TaskScope& tasks;  ///< of the view model; what it does when it is empty is set here
  };

  explicit Quitting(const Services& services) : services_(services) {}
  Quitting(const Quitting&) = delete;
  Quitting& operator=(const Quitting&) = delete;
  ~Quitting() = default;

  /// Closes the popover, stops watching, also folders that are added meanwhile, and terminates the
  /// application once no engine runs any more; at once when it is called again.
  void quit();

  /// Whether the main loop, which has ended, has left conversions under way. They run on threads
  /// that use what the program is made of and cannot be interrupted: the process must end then
  /// without destroying anything.
  bool leavesConversions() const { return !services_.tasks.empty(); }

 private:
  Services services_;
  bool isQuitting_ = false;
  Subscription folders_;
};

}  // namespace kestrivane
