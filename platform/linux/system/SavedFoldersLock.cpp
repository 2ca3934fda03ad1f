#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/SavedFoldersLock.hpp"

#include <system_error>

#include "platform/linux/system/ConfigurationFolder.hpp"
#include "platform/linux/system/DefaultsFile.hpp"
#include "platform/linux/system/PosixError.hpp"

namespace kestrivane {

FileURL userDefaultsFile() {
  return configurationFolder().appendingPathComponent("defaults.json");
}

std::optional<FileLock> tryLockSavedFolders() try {
  makeFolder(configurationFolder());
  return FileLock::tryTake(
      configurationFolder().appendingPathComponent("saved-folders.lock").path());
} catch (const std::system_error& error) {
  throw posixError(error.code().value(), FileOperation::saveDefaults, userDefaultsFile());
}

}  // namespace kestrivane
