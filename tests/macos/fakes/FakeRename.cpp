#include "tests/macos/fakes/FakeRename.hpp"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <stdio.h>

namespace kestrivane::test {
namespace {

std::function<int(int)> hookInUse;
int calls = 0;

}  // namespace

RenameHook::RenameHook(std::function<int(int)> hook) {
  hookInUse = std::move(hook);
  calls = 0;
}

RenameHook::~RenameHook() {
  hookInUse = nullptr;
}

}  // namespace kestrivane::test

int renamex_np(const char* from, const char* to, unsigned int flags) {
  using namespace kestrivane::test;
  if (hookInUse) {
    errno = hookInUse(++calls);
    if (errno != 0) return -1;
  }
  if (flags != RENAME_SWAP && flags != RENAME_EXCL) {
    errno = EINVAL;
    return -1;
  }
  return renameat2(AT_FDCWD, from, AT_FDCWD, to,
                   flags == RENAME_SWAP ? RENAME_EXCHANGE : RENAME_NOREPLACE);
}
