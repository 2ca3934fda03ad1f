// Walks directory trees on threads of its own and has everything below watched.
//
// A directory is watched first and listed then, so that nothing made in between is missed.
// Thread-safety: `start` may be called from any thread; `onFinished` is called on a walker's
// thread. Ownership: owns its threads and ends them, in the middle of walks, when it is destroyed;
// the registry outlives it.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/events/DirectoryListing.hpp"
#include "platform/linux/events/WatchRegistry.hpp"

namespace kestrivane {

/// One walk and what has become of it. The second half is complete once the walk is finished.
struct Walk {
  enum class Reports { nothing, whatIsFound };

  StreamId stream = 0;
  Reports reports = Reports::nothing;
  std::function<void()> whenFinished{};  ///< for whoever started it; the walker does not call it

  struct Item {
    std::string path;
    bool isDirectory;
  };
  struct Failure {
    std::string path;  ///< empty for a folder of the stream itself
    std::size_t rootIndex;
    int error;  ///< an `errno`
  };
  std::vector<Item> found{};        ///< in directories that were not watched before
  bool limitReached = false;        ///< of the user's watches
  std::vector<Failure> failures{};  ///< directories that could not be watched for another reason
  std::size_t stepsLeft = 0;        ///< for the walker
};

class TreeWalker {
 public:
  using OnFinished = std::function<void(std::shared_ptr<Walk>)>;

  TreeWalker(WatchRegistry& registry, OnFinished onFinished);
  TreeWalker(const TreeWalker&) = delete;
  TreeWalker& operator=(const TreeWalker&) = delete;
  ~TreeWalker();

  /// Walks the stream's folders number 0 to `rootCount` - 1.
  void startAtRoots(const std::shared_ptr<Walk>& walk, std::size_t rootCount);

  enum class Top {
    isNew,   ///< its entries are reported, if the walk reports
    isKnown  ///< only directories in it that were not watched are
  };
  /// Lists the watched directory `top`, and everything below that needs it.
  void startAt(const std::shared_ptr<Walk>& walk, WatchedDirectory directory, Top top);

 private:
  // One directory whose subdirectories are to be watched.
  struct Step {
    std::shared_ptr<Walk> walk;
    WatchedDirectory directory{};  // stale for a stream's folder
    std::size_t rootIndex = 0;
    Top top = Top::isKnown;
    std::string names{};  // of subdirectories, each ended by NUL; empty: to be listed
  };
  struct Worker {
    NameResolver resolver;
    DirectoryListing listing;
  };

  void run();
  void add(Step step);
  void perform(Step& step, Worker& worker);
  FileDescriptor openTop(Step& step, Worker& worker);
  void list(Step& step, const FileDescriptor& descriptor, Worker& worker);
  void watchChildren(const Step& step, const FileDescriptor& descriptor, Worker& worker);
  void enterChild(const Step& step, const FileDescriptor& parent, const char* name,
                  const WatchRegistry::Attachment& child, Worker& worker);
  void noteFailure(const Step& step, const char* name, int error);

  WatchRegistry& registry_;
  OnFinished onFinished_;

  std::mutex mutex_;  // guards what follows and the results of every walk
  std::condition_variable changed_;
  std::vector<Step> steps_;  // the last one is next: few are waiting at any time
  bool ending_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace kestrivane
