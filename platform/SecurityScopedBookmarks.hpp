// Names for folders that survive a restart, and the access to what they name.
//
// Thread-safety: every operation may be called from any thread. Ownership: none; whoever starts
// access to a folder stops it.
#pragma once

#include <optional>
#include <span>

#include "platform/Data.hpp"
#include "platform/FileURL.hpp"

namespace kestrivane {

/// What a bookmark leads to.
struct ResolvedBookmark {
  FileURL url;
  bool isStale = false;  ///< another folder is at the place now, or the bookmark is to be made anew
};

class SecurityScopedBookmarks {
 public:
  SecurityScopedBookmarks() = default;
  SecurityScopedBookmarks(const SecurityScopedBookmarks&) = delete;
  SecurityScopedBookmarks& operator=(const SecurityScopedBookmarks&) = delete;
  virtual ~SecurityScopedBookmarks() = default;

  /// A bookmark of the folder, with security scope. For a folder that is away, as on a disk that
  /// was taken out, the one that was last made of it or resolved to it here. Throws `PlatformError`
  /// where there is none.
  virtual Data bookmarkData(const FileURL& folder) const = 0;

  /// The folder that the bookmark names, with security scope. Throws `PlatformError` if it cannot
  /// be found, or if `bookmark` is damaged or comes from a later version of the program.
  virtual ResolvedBookmark resolve(std::span<const std::byte> bookmark) const = 0;

  /// Where the folder was when the bookmark was made, whether or not it is there now; nothing if
  /// `bookmark` is damaged or comes from a later version of the program.
  virtual std::optional<FileURL> placeOf(std::span<const std::byte> bookmark) const = 0;

  /// Opens the access to the folder; false when it is not granted. Each start that returns true is
  /// balanced by one stop.
  virtual bool startAccessing(const FileURL& folder) = 0;
  virtual void stopAccessing(const FileURL& folder) = 0;
};

}  // namespace kestrivane
