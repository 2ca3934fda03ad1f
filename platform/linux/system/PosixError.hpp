// The one mapper from `errno` to an error for the user.
//
// The description is a sentence in the current language: what could not be done, to which file,
// why, and what helps. Thread-safety: may be called from any thread.
#pragma once

#include "platform/FileURL.hpp"
#include "platform/PlatformError.hpp"

namespace kestrivane {

enum class FileOperation {
  move,
  replace,
  makeTemporaryDirectory,
  readDefaults,
  saveDefaults,
  findFolder
};

/// The error of an `operation` on the item at `url`, of which only the last path component is
/// shown. `ESTALE` stands for a file that was changed while it was being replaced.
PlatformError posixError(int errnoValue, FileOperation operation, const FileURL& url);

}  // namespace kestrivane
