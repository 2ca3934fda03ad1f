// Renames that never overwrite, on every file system.
//
// Thread-safety: may be called from any thread. Failures are told by `errno`, as by a system call.
#pragma once

#include <string>

namespace kestrivane {

/// True for the `errno` of a file system or kernel that does not know a flag of renameat2(2).
bool isRenameFlagUnknown(int errnoValue);

/// Renames the item; false, with `errno` set, when that failed. `EEXIST` when something is at
/// `destination`, which is then untouched.
bool renameWithoutReplacing(const std::string& source, const std::string& destination);

}  // namespace kestrivane
