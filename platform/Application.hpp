// The running program as the desktop sees it.
//
// Thread-safety: for the main thread. Ownership: made first and destroyed last by `main`.
#pragma once

namespace kestrivane {

enum class ActivationPolicy {
  regular,    ///< an ordinary application
  accessory,  ///< no icon among the running applications, no menu bar, no window of its own
};

class Application {
 public:
  Application() = default;
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;
  virtual ~Application() = default;

  virtual void setActivationPolicy(ActivationPolicy policy) = 0;

  /// Ends the main loop; the program ends after it.
  virtual void terminate() = 0;
};

}  // namespace kestrivane
