// Functions of modules: libraries in the bundle that are loaded when they are first needed, since
// what they bring along takes more memory than all the rest.
//
// Thread-safety: may be called from any thread. Ownership: a module that was loaded stays until the
// program ends, as there may always be an error or an object of it about.
#pragma once

#include "platform/Bundle.hpp"

namespace kestrivane {

/// The C function of that name in the module `file`, an auxiliary executable of the bundle, which
/// is loaded if it has not been yet. Throws `PlatformError` with `ELIBACC` when it cannot be, or
/// belongs to another version of the program.
void* moduleFunction(const Bundle& bundle, const char* file, const char* name);

/// As above, as a `Function`, which the module declares it to be.
template <typename Function>
Function& moduleFunction(const Bundle& bundle, const char* file, const char* name) {
  return *reinterpret_cast<Function*>(moduleFunction(bundle, file, name));
}

}  // namespace kestrivane
