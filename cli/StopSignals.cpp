#include "cli/StopSignals.hpp"

#include <csignal>
#include <utility>

#include <pthread.h>
#include <unistd.h>

namespace kestrivane {
namespace {

/// Wakes the waiting thread when it is to end.
constexpr int wakeSignal = SIGUSR2;

sigset_t awaitedSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, wakeSignal})
    sigaddset(&set, signal);
  return set;
}

void waitForSignals(const std::stop_token& stop, const std::function<void()>& handler) {
  const sigset_t signals = awaitedSignals();
  bool isFirst = true;
  int signal = 0;
  while (sigwait(&signals, &signal) == 0 && !stop.stop_requested()) {
    if (signal == wakeSignal) continue;
    if (!std::exchange(isFirst, false)) _exit(128 + signal);
    handler();
  }
}

}  // namespace

void StopSignals::block() {
  const sigset_t signals = awaitedSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGXFSZ, SIG_IGN);
}

StopSignals::StopSignals(std::function<void()> handler)
    : thread_([handler = std::move(handler)](const std::stop_token& stop) {
        waitForSignals(stop, handler);
      }) {}

StopSignals::~StopSignals() {
  thread_.request_stop();
  pthread_kill(thread_.native_handle(), wakeSignal);
}

}  // namespace kestrivane
