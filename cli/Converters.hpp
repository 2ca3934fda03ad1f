// The converters of an engine over the adapters of this system, in the order in which they are
// asked: image, video, ffmpeg.
//
// Thread-safety: for the main thread. Ownership: owns the adapters that only converters use; the
// converters refer to them and go first. The services outlive both.
#pragma once

#include <memory>
#include <vector>

#include "async/LimitedQueue.hpp"
#include "engine/FileConverter.hpp"
#include "platform/Dispatch.hpp"
#include "platform/FileManager.hpp"
#include "platform/Logger.hpp"
#include "platform/linux/images/LinuxImageIO.hpp"
#include "platform/linux/media/LinuxAssetExporter.hpp"
#include "platform/linux/media/LinuxMediaInspector.hpp"
#include "platform/linux/system/LinuxBundle.hpp"
#include "platform/linux/system/LinuxProcess.hpp"

namespace kestrivane {

class Converters {
 public:
  Converters(const FileManager& fileManager, UnifiedLog& log, Dispatch& dispatch);

  /// New ones for one engine.
  std::vector<std::shared_ptr<const FileConverter>> make();

 private:
  const FileManager& fileManager_;
  UnifiedLog& log_;
  Dispatch& dispatch_;
  LinuxImageIO imageIO_;
  LimitedQueue encodingQueue_;
  LinuxBundle bundle_ = LinuxBundle::ofThisProgram();
  LinuxAssetExporter assetExporter_;
  LinuxProcess process_;
  LinuxMediaInspector mediaInspector_{bundle_};
};

}  // namespace kestrivane
