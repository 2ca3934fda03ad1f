// The message catalogue: every composed text that the user reads, in Russian and in English.
//
// The language is chosen anew at every call, from the current locale. Thread-safety: static members
// without state; may be called from any thread.
#pragma once

#include <string>
#include <string_view>

namespace kestrivane {

class L10n {
 public:
  L10n() = delete;

  /// True when the current locale's language code is exactly "ru".
  static bool isRussian();

  /// One of the two variants of a fixed text.
  static std::string choose(std::string_view english, std::string_view russian);

  /// No converter can turn the one extension into the other.
  static std::string unsupportedFormat(std::string_view from, std::string_view to);

  /// A conversion failed for the reason `detail`.
  static std::string conversionError(std::string_view detail);

  /// A file was converted; its names before and after the rename.
  static std::string success(std::string_view from, std::string_view to);

  /// A file was renamed back after a failure.
  static std::string reverted(std::string_view file, std::string_view originalExtension);

  /// A file could not even be renamed back.
  static std::string revertFailed(std::string_view file);
};

}  // namespace kestrivane
