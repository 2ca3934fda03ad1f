// What a program gets from the one that started it and must not depend on.
//
// Thread-safety: to be called once, at the start, while there is one thread.
#pragma once

namespace kestrivane {

/// Afterwards standard input is empty, so that no child reads what is typed into the terminal; the
/// standard streams are open, so that no other file takes their numbers; and SIGCHLD is not
/// ignored, so that children leave their exit status.
void replaceInheritedState();

}  // namespace kestrivane
