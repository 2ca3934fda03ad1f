// The one mapper from the error codes of the media libraries to an error for the user.
//
// The description is the library's own text, which is English. Thread-safety: may be called from
// any thread.
#pragma once

#include "platform/PlatformError.hpp"

namespace kestrivane {

/// `code` is negative: one of the library's own, or an `errno` with the sign turned.
PlatformError mediaError(int code);

/// Throws `mediaError(result)` when `result` is negative, else hands it on.
int checked(int result);

[[noreturn]] void throwOutOfMemory();

/// Throws the error of missing memory when `pointer` is null, else hands it on.
template <typename Pointer>
Pointer allocated(Pointer pointer) {
  if (!pointer) throwOutOfMemory();
  return pointer;
}

}  // namespace kestrivane
