// What every converter can be asked.
//
// Thread-safety: both operations are called on the main thread; work that takes long moves to a
// queue and is awaited. Ownership: converters are immutable and hold no state between conversions.
#pragma once

#include <string_view>

#include "async/Task.hpp"
#include "platform/FileURL.hpp"

namespace kestrivane {

class FileConverter {
 public:
  virtual ~FileConverter() = default;

  /// Whether a file with the extension `from` can become one with the extension `to`; both without
  /// the dot, in any case.
  virtual bool canConvert(std::string_view from, std::string_view to) const = 0;

  /// Reads the file at `sourceURL` and writes the converted one at `destinationURL`, where nothing
  /// is yet and whose extension names the target format. The source is never changed. Throws
  /// `ConversionError` or a platform error. Resumes on the caller's event loop.
  virtual Task<void> convert(FileURL sourceURL, FileURL destinationURL) const = 0;

 protected:
  FileConverter() = default;
  FileConverter(const FileConverter&) = default;
  FileConverter& operator=(const FileConverter&) = default;
};

}  // namespace kestrivane
