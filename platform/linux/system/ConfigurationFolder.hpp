// Where the program keeps what the user has set (the XDG base directories).
// Thread-safety: may be called while nobody changes the environment.
#pragma once

#include "platform/FileURL.hpp"

namespace kestrivane {

/// The folder `kestrivane` in $XDG_CONFIG_HOME or, where that is not an absolute path, in
/// ~/.config. It need not exist.
FileURL configurationFolder();

/// Makes the folder, and those above it that are not there yet, for the user alone. Throws
/// `std::system_error`.
void makeFolder(const FileURL& folder);

}  // namespace kestrivane
