// The renames that only macOS has, by those of this system, on real files.
//
// Thread-safety: none; used on the test's thread. Ownership: one hook at a time owns what it calls.
#pragma once

#include <functional>

namespace kestrivane::test {

/// While it lives, it is called before each such rename with the number of the call, from 1 on.
/// What it returns is the rename's error, and 0 lets it happen.
class RenameHook {
 public:
  explicit RenameHook(std::function<int(int call)> hook);
  RenameHook(const RenameHook&) = delete;
  RenameHook& operator=(const RenameHook&) = delete;
  ~RenameHook();
};

}  // namespace kestrivane::test
