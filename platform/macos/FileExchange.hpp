// The last step of putting a file in the place of another: the two change names, and what came out
// is looked at.
//
// Thread-safety: may be called from any thread. Ownership: none.
#pragma once

#include "platform/FileManager.hpp"
#include "platform/FileURL.hpp"

namespace kestrivane {

/// The version of the item at `url`; of a symbolic link, that of the link itself.
FileVersion versionAt(const FileURL& url);

enum class ExchangeResult {
  exchanged,  ///< each file has the other's name
  refused,    ///< by the system, for instance because the volume cannot do it; nothing has happened
  changed,    ///< `original` was not the file that was expected; the exchange is undone
  stranded,   ///< the same, but a file of somebody else's could not be put back and is at `fresh`
};

/// Exchanges the names of two files on one volume in one step, if `original` is the file `expected`
/// and unchanged.
ExchangeResult exchangeFiles(const FileURL& original, const FileURL& fresh,
                             const FileVersion& expected);

}  // namespace kestrivane
