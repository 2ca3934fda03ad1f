// Watches folders from start to signal: the wiring of the adapters.
//
// Thread-safety: for the main thread. Ownership: a call owns everything that it makes.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace kestrivane {

struct FolderProblem {
  std::string folder;       ///< as it was typed
  std::string description;  ///< for the user
};

/// The folders that do not exist, are no folders or cannot be read.
std::vector<FolderProblem> findFolderProblems(std::span<const std::string> folders);

/// Watches the folders, without saving them, until SIGINT, SIGTERM or SIGHUP and lets the
/// conversions under way finish. Returns the exit status: 0, or 1 when no folder could be watched.
int watchFolders(std::span<const std::string> folders);

/// Watches the saved folders in the same way, and follows the list when it is changed. Throws
/// `PlatformError` if another program works on them, or if that cannot be found out.
int watchSavedFolders();

}  // namespace kestrivane
