// Turns the failure of a system call into an exception inside this folder. Whoever knows the file
// maps it to a `PlatformError`; none leaves the adapters. Thread-safety: `errno` is the thread's
// own.
#pragma once

#include <cerrno>
#include <system_error>

namespace kestrivane {

[[noreturn]] inline void throwSystemError(int errnoValue) {
  throw std::system_error(errnoValue, std::generic_category());
}

/// `result`, unless it is negative: then throws `std::system_error` with the current `errno`.
template <typename Result>
Result checked(Result result) {
  if (result < 0) throwSystemError(errno);
  return result;
}

}  // namespace kestrivane
