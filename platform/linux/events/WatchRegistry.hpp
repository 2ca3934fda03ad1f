// The tree of watched directories together with the kernel's watches, kept in step.
//
// A node is added in the same critical section as its watch, and events are translated under the
// same lock: the tree always knows a watch before its first event. A directory is known by its
// watch, not by its name: found in a second place, it has been moved. Thread-safety: every
// operation may be called from any thread; a `NameResolver` belongs to the calling one. Ownership:
// owns the tree; the inotify instance outlives the registry.
#pragma once

#include <mutex>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/linux/events/Inotify.hpp"
#include "platform/linux/events/NameResolver.hpp"
#include "platform/linux/events/WatchTree.hpp"

namespace kestrivane {

/// A node as others may hold on to it: it is stale once the tree has no such node with that watch.
struct WatchedDirectory {
  NodeIndex node = noNode;
  int watch = -1;
};

/// The path of the item `name` in the directory at `directory`.
inline std::string childPath(std::string directory, std::string_view name) {
  if (directory != "/") directory += '/';
  return directory.append(name);
}

class WatchRegistry {
 public:
  explicit WatchRegistry(const Inotify& inotify) : inotify_(inotify) {}

  /// What became of an attempt to watch a directory.
  struct Attachment {
    WatchedDirectory directory{};  ///< the node, if `error` is 0
    int error = 0;                 ///< an `errno`; ESTALE when the tree has changed meanwhile
    bool isNew = false;            ///< was not in this stream's tree before
    bool needsListing = false;     ///< is new, or was not seen yet since `beginEpoch`
  };

  /// A directory in a stream's tree.
  struct Location {
    StreamId stream;
    WatchedDirectory directory;
    std::string path;  ///< absolute; empty while the directory's place is not known
    bool isRoot;
  };

  void addStream(StreamId stream, std::vector<std::string> paths);
  /// Forgets the stream with its nodes; their watches end by `removeUnneededWatches`.
  void removeStream(StreamId stream);

  /// Watches the stream's folder number `index` itself; enters it if `descriptor` is set.
  Attachment attachRoot(StreamId stream, std::size_t index, NameResolver& resolver,
                        FileDescriptor& descriptor);

  /// Watches the directories `names` of `parent`, which `resolver` has entered. Fewer results than
  /// names: `parent` is stale.
  std::vector<Attachment> attachChildren(WatchedDirectory parent, NameResolver& resolver,
                                         std::span<const char* const> names);

  /// Opens and enters a directory, and makes sure that it is the one that is watched. Sets `error`
  /// to an `errno` on failure: ESTALE when its path leads to another directory now.
  FileDescriptor open(WatchedDirectory directory, NameResolver& resolver, int& error);

  /// All places of a watch in the trees of all streams.
  std::vector<Location> locate(int watch);
  /// The absolute path of a directory in its stream; empty when it has none.
  std::string path(WatchedDirectory directory);
  /// The child `name`, or a stale value.
  WatchedDirectory child(WatchedDirectory parent, std::string_view name);

  enum class Presence { present, gone, unknown };
  /// Whether the directory still is at its place; `unknown` while its parent's place is in doubt,
  /// and for a stream's folder that is not there: it may come back.
  Presence presence(WatchedDirectory directory, NameResolver& resolver);

  /// Notes that the places of a watch have to be checked.
  void doubt(int watch);
  std::vector<int> takeDoubtful();

  /// Removes a node with all below it, or all nodes of a watch that the kernel has ended.
  void remove(WatchedDirectory directory);
  void watchEnded(int watch);

  /// From now on every directory counts as not seen.
  void beginEpoch();
  /// Doubts every directory of the stream that was not seen since `beginEpoch`.
  void doubtUnseen(StreamId stream);

  /// Ends up to `limit` watches that no node needs; whether more are left.
  bool removeUnneededWatches(std::size_t limit);

 private:
  struct Root {
    std::string path;
    NodeIndex node = noNode;
  };

  Attachment attach(NodeIndex parent, NameResolver& resolver, const char* name);
  Attachment seen(NodeIndex node, bool isNew);
  NodeIndex movedNode(NodeIndex parent, NameResolver& resolver, const char* name, int watch) const;
  bool leadsTo(const char* path, int watch);
  std::string absolutePath(NodeIndex node) const;
  void removeTree(NodeIndex node);

  const Inotify& inotify_;
  std::mutex mutex_;
  WatchTree tree_;
  std::unordered_map<StreamId, std::vector<Root>> streams_;
  std::vector<int> doubtful_;
  std::vector<int> unneeded_;  // may have come into use again
  std::uint8_t epoch_ = 0;
};

}  // namespace kestrivane
