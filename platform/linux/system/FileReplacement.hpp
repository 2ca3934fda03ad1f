// Puts a new file in the place of another in one step.
//
// The new file gets a staging name beside the original with everything that it will be, is flushed
// to the disk, and then the two names are exchanged. What came out is looked at: if it is not the
// file that was expected, unchanged, the exchange is undone. Only then is the old file let
// go. A crash or power cut at any moment leaves the old or the complete new file under the name; at
// worst the other one stays under the hidden staging name. Nothing removes such a remnant later,
// since it may be the user's only copy of an old version.
//
// Where names cannot be exchanged the original is looked at just before a plain rename over it.
// Thread-safety: may be called from any thread.
#pragma once

#include "platform/FileManager.hpp"
#include "platform/FileURL.hpp"

namespace kestrivane {

/// As `FileManager::replaceItem`. If `original` is a symbolic link, the link itself is replaced,
/// by a file with the attributes of the one that it leads to: that one may be anywhere and keeps
/// its content. Other hard links of `original` keep the old content.
void replaceFile(const FileURL& original, const FileURL& replacement, const FileVersion& expected);

}  // namespace kestrivane
