// Who works on the saved folders: of all programs of the user, one at a time. Two that convert the
// same files would get in each other's way.
//
// Thread-safety: for the start of the program. Ownership: the lock is held for as long as the
// result lives, and ends with the process however that ends.
#pragma once

#include <optional>

#include "platform/FileURL.hpp"
#include "platform/linux/system/FileLock.hpp"

namespace kestrivane {

/// The user's file of preferences, in which the saved folders stand.
FileURL userDefaultsFile();

/// Nothing if another program holds the lock. Makes the configuration folder if it is not there.
/// Throws `PlatformError` if that cannot be done.
std::optional<FileLock> tryLockSavedFolders();

}  // namespace kestrivane
