// Converts to and from WebM, and videos to MP3, by the `ffmpeg` tool that is installed with the
// program.
//
// Thread-safety: called on the main thread; the tool is waited for on the queue for encoding, where
// each conversion has its turn. Ownership: refers to the services, which outlive it.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "async/Executor.hpp"
#include "engine/FileConverter.hpp"
#include "platform/Bundle.hpp"
#include "platform/FileManager.hpp"
#include "platform/Logger.hpp"
#include "platform/MediaInspector.hpp"
#include "platform/Process.hpp"

namespace kestrivane {

class FFmpegConverter final : public FileConverter {
 public:
  struct Services {
    const Bundle& bundle;
    const FileManager& fileManager;
    Process& process;
    const MediaInspector& mediaInspector;
    UnifiedLog& log;
    Executor& encodingQueue;
  };

  explicit FFmpegConverter(const Services& services);

  /// Any pair with WebM on one side, and MP3 from a video.
  bool canConvert(std::string_view from, std::string_view to) const override;

  /// The tool chooses the format by the extension of `destinationURL`. A destination that it has
  /// begun to write is left behind when it fails. Throws `ConversionError`.
  Task<void> convert(FileURL sourceURL, FileURL destinationURL) const override;

 private:
  FileURL findTool() const;

  Services services_;
  std::vector<std::string_view> videoExtensions_;
  std::vector<std::string_view> audioExtensions_;
  std::unique_ptr<Logger> logger_;
};

}  // namespace kestrivane
