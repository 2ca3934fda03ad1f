// A small file system in memory that reports its changes: `FileManager` and `FileEventService` in
// one.
//
// Thread-safety: none; used on the test's thread. Ownership: owns its items; streams refer to it
// and go before it does.
#pragma once

#include <cerrno>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/FileEventStream.hpp"
#include "platform/FileManager.hpp"

namespace kestrivane::test {

class InMemoryFileSystem final : public FileManager, public FileEventService {
 public:
  InMemoryFileSystem() { createDirectory("/tmp"); }

  // What a test does, as another program would. Changes are reported to the streams.
  void createDirectory(const std::string& path);
  void writeFile(const std::string& path, std::string content);
  void remove(const std::string& path);
  /// Makes `path` another name of the directory `target`; only `resolvingSymbolicLinks` follows it.
  void link(const std::string& path, const std::string& target) { links_[path] = target; }
  void rename(const std::string& from, const std::string& to);

  /// Hands the batch to every stream, whatever it says.
  void emit(const std::vector<std::string>& paths, const std::vector<std::uint32_t>& flags);

  /// The content of the file; nothing when there is none.
  std::optional<std::string> content(const std::string& path) const;
  /// The paths of all items in `folder` and below it.
  std::vector<std::string> paths(const std::string& folder) const;

  /// Makes every later operation of that kind throw or return null.
  bool movesFail = false;
  bool isFull = false;  ///< only `hasRoom` minds
  bool replacementsFail = false;
  bool temporaryDirectoryFails = false;
  bool streamsFail = false;

  /// The streams' configurations, in the order they were made in.
  std::vector<FileEventStreamConfiguration> configurations;
  /// The paths whose existence was asked for.
  mutable std::vector<std::string> existenceQueries;

  ItemKind kindOfItem(const FileURL& url) const override;
  FileURL resolvingSymbolicLinks(const FileURL& url) const override;
  bool hasRoom(const FileURL&) const override { return !isFull; }
  void moveItem(const FileURL& source, const FileURL& destination) override;
  FileVersion versionOfItem(const FileURL& url) const override;
  void replaceItem(const FileURL& original, const FileURL& replacement,
                   const FileVersion& expected) override;
  FileURL temporaryDirectory() override;

  FileEventId currentEventId() override { return eventId_; }
  std::unique_ptr<FileEventStream> createStream(FileEventStreamConfiguration configuration,
                                                std::shared_ptr<Executor> queue,
                                                FileEventStream::Callback callback) override;

 private:
  class Stream;
  struct Event {
    std::string path;
    std::uint32_t flags;
  };

  void report(const std::vector<Event>& events);
  void moveTree(const std::string& from, const std::string& to);

  std::map<std::string, std::optional<std::string>> items_;  ///< no content: a directory
  std::map<std::string, std::int64_t> lastWrites_;           ///< by path: a number that grows
  std::map<std::string, std::string> links_;
  std::set<Stream*> streams_;
  std::int64_t writeCount_ = 0;
  FileEventId eventId_ = 1;
};

}  // namespace kestrivane::test
