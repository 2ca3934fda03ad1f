// Puts a new file in the place of another in one step.
//
// Where the volume can exchange names, Foundation makes the new file ready beside a copy of the
// original, from which it takes all attributes; then the two names are exchanged, and what came out
// is looked at: if it is not the file that was expected, unchanged, the exchange is undone. On
// other volumes the original is looked at just before Foundation replaces it; what is saved in
// between is lost. Thread-safety: may be called from any thread.
#pragma once

#include "platform/FileManager.hpp"
#include "platform/FileURL.hpp"

namespace kestrivane {

/// As `FileManager::replaceItem`. If `original` is a symbolic link, the link itself is replaced, by
/// a file with the attributes of the one that it leads to.
void replaceFile(const FileURL& original, const FileURL& replacement, const FileVersion& expected);

}  // namespace kestrivane
