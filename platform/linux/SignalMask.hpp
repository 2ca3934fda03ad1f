// Threads started while one of these lives leave SIGINT, SIGTERM and SIGHUP to the main thread: a
// thread inherits the mask of the one that starts it.
//
// Thread-safety: belongs to the thread that makes it. Ownership: puts the former mask back.
#pragma once

#include <csignal>

namespace kestrivane {

class SignalMask {
 public:
  SignalMask() {
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
      sigaddset(&blocked, signal);
    pthread_sigmask(SIG_BLOCK, &blocked, &former_);
  }
  SignalMask(const SignalMask&) = delete;
  SignalMask& operator=(const SignalMask&) = delete;
  ~SignalMask() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }

 private:
  sigset_t former_;
};

}  // namespace kestrivane
