// `--add`, `--remove` and `--list`: what they do and say.
//
// Thread-safety: for the main thread. Ownership: a call owns everything that it makes.
#pragma once

#include "cli/CommandLine.hpp"

namespace kestrivane {

/// Carries out a command line with the action `add`, `remove` or `list` and returns the exit
/// status: 0, or 2 when something could not be done.
int runSavedFoldersCommand(const CommandLine& line);

}  // namespace kestrivane
