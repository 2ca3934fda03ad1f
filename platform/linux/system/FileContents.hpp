// Reads and writes whole files, and copies what a file consists of into another open file: its
// content, and its attributes.
//
// Thread-safety: may be called from any thread. Ownership: the descriptors stay the caller's.
// Failures are thrown as `std::system_error`.
#pragma once

#include <string>
#include <string_view>

namespace kestrivane {

/// The bytes from the current position of `file` to its end.
std::string readAll(int file);

/// Writes all of `bytes` at the current position.
void writeAll(int file, std::string_view bytes);

/// Copies the whole content of the regular file `from` to the empty file `to`, inside of the kernel
/// where it can. Throws `EIO` when `from` turns out shorter than it says.
void copyContent(int from, int to);

/// Gives `to` the permissions, owner, access control list and extended attributes of `from`, as far
/// as this process may. What vouches for the old content (file capabilities, set-user-ID bits,
/// integrity hashes) is left out, as writing into the file would have dropped it too.
void copyAttributes(int from, int to);

}  // namespace kestrivane
