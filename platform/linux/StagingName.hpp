// The names of files that are complete only after a rename: the file manager makes them beside the
// file that they will replace, and the event stream keeps silent about them. Thread-safety: a
// constant and a pure function. Ownership: none.
#pragma once

#include <string_view>

namespace kestrivane {

/// How the last component of every staging path begins.
inline constexpr std::string_view stagingPrefix = ".kestrivane-staging-";

/// Whether the last component of `path` is a staging name.
inline bool isStagingPath(std::string_view path) {
  return path.substr(path.rfind('/') + 1).starts_with(stagingPrefix);
}

}  // namespace kestrivane
