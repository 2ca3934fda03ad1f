// What a folder monitor reports. Thread-safety and ownership: a plain value.
#pragma once

#include <utility>

#include "platform/FileURL.hpp"

namespace kestrivane {

/// The one kind of event: the file that was at `oldURL` is now at `newURL`, and the two names
/// differ in extension.
struct FolderEvent {
  FileURL oldURL;
  FileURL newURL;

  static FolderEvent renamed(FileURL oldURL, FileURL newURL) {
    return {std::move(oldURL), std::move(newURL)};
  }

  friend bool operator==(const FolderEvent&, const FolderEvent&) = default;
};

}  // namespace kestrivane
