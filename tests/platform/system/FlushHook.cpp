#include "tests/platform/system/FlushHook.hpp"

#include <cerrno>
#include <utility>

#include <sys/syscall.h>
#include <unistd.h>

namespace kestrivane::test {
namespace {

FlushHook::Action currentAction;
int flushCount = 0;

}  // namespace

FlushHook::FlushHook(Action action) {
  flushCount = 0;
  currentAction = std::move(action);
}

FlushHook::~FlushHook() {
  currentAction = nullptr;
}

}  // namespace kestrivane::test

// Found before the one of the C library.
extern "C" int fsync(int file) {
  using namespace kestrivane::test;
  if (currentAction) {
    if (const int error = currentAction(++flushCount); error != 0) {
      errno = error;
      return -1;
    }
  }
  return static_cast<int>(syscall(SYS_fsync, file));
}
