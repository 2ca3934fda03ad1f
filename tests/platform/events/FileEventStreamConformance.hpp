// What every implementation of `FileEventService` keeps to, whatever file system is behind it.
//
// A world is one implementation with the file system that it reports on. Thread-safety: belongs to
// the test's thread. Ownership: owns its service; streams go first.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tests/platform/events/EventRecorder.hpp"

namespace kestrivane::test {

class FileEventWorld {
 public:
  FileEventWorld() = default;
  FileEventWorld(const FileEventWorld&) = delete;
  FileEventWorld& operator=(const FileEventWorld&) = delete;
  virtual ~FileEventWorld() = default;

  /// An empty folder.
  virtual std::string root() const = 0;
  virtual FileEventService& service() = 0;
  virtual std::shared_ptr<Executor> makeQueue() = 0;

  virtual void createDirectory(const std::string& path) = 0;
  virtual void writeFile(const std::string& path) = 0;
  virtual void rename(const std::string& from, const std::string& to) = 0;
  virtual void remove(const std::string& path) = 0;

  /// Waits until streams that were started at `path` so far report everything.
  virtual bool waitUntilWatching(const std::string& path) = 0;
  virtual bool waitUntil(EventRecorder& recorder, const std::function<bool()>& condition) = 0;
};

/// Makes a world of one kind.
using MakeFileEventWorld = std::unique_ptr<FileEventWorld> (*)();

class FileEventStreamConformance : public testing::TestWithParam<MakeFileEventWorld> {
 protected:
  struct Watched {
    EventRecorder recorder;
    std::unique_ptr<FileEventStream> stream;
    ~Watched() {
      if (stream) stream->stop();
    }
  };

  std::unique_ptr<Watched> watch(const std::string& path);
  /// Makes a file and waits for its report: everything before it has been reported then.
  void expectUpToDate(Watched& watched, const std::string& folder);
  bool waitFor(Watched& watched, const std::string& path, std::uint32_t flags);
  bool waitForRename(Watched& watched, const std::string& from, const std::string& to);

  std::unique_ptr<FileEventWorld> world = GetParam()();
  const std::string root = world->root();
};

}  // namespace kestrivane::test
