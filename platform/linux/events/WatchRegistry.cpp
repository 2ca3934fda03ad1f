#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/events/WatchRegistry.hpp"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace kestrivane {

namespace {

constexpr int openFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

bool isSameItem(const char* path, const char* otherPath) {
  struct stat item {};
  struct stat other {};
  return ::lstat(path, &item) == 0 && ::lstat(otherPath, &other) == 0 &&
         item.st_dev == other.st_dev && item.st_ino == other.st_ino;
}

}  // namespace

void WatchRegistry::addStream(StreamId stream, std::vector<std::string> paths) {
  const std::lock_guard lock(mutex_);
  std::vector<Root>& roots = streams_[stream];
  for (std::string& path : paths)
    roots.push_back({std::move(path)});
}

void WatchRegistry::removeStream(StreamId stream) {
  const std::lock_guard lock(mutex_);
  const auto found = streams_.find(stream);
  if (found == streams_.end()) return;
  for (const Root& root : found->second) {
    if (root.node != noNode) removeTree(root.node);
  }
  streams_.erase(found);
}

WatchRegistry::Attachment WatchRegistry::attachRoot(StreamId stream, std::size_t index,
                                                    NameResolver& resolver,
                                                    FileDescriptor& descriptor) {
  std::string path;
  {
    const std::lock_guard lock(mutex_);
    const auto found = streams_.find(stream);
    if (found == streams_.end()) return {.error = ESTALE};
    path = found->second[index].path;
  }
  // The folder itself may be named by a symbolic link.
  descriptor = FileDescriptor(::open(path.c_str(), openFlags));
  if (!descriptor) return {.error = errno};
  resolver.enter(descriptor);

  const std::lock_guard lock(mutex_);
  const auto found = streams_.find(stream);
  if (found == streams_.end()) return {.error = ESTALE};
  Root& root = found->second[index];
  const int watch = inotify_.addWatch(resolver.path("."));
  if (watch < 0) return {.error = -watch};
  if (root.node != noNode && tree_.watch(root.node) == watch) return seen(root.node, false);
  if (root.node != noNode) removeTree(root.node);
  root.node = tree_.addRoot(stream, watch);
  return seen(root.node, true);
}

std::vector<WatchRegistry::Attachment> WatchRegistry::attachChildren(
    WatchedDirectory parent, NameResolver& resolver, std::span<const char* const> names) {
  std::vector<Attachment> attachments;
  attachments.reserve(names.size());
  const std::lock_guard lock(mutex_);
  for (const char* const name : names) {
    if (!tree_.contains(parent.node, parent.watch)) break;
    attachments.push_back(attach(parent.node, resolver, name));
  }
  return attachments;
}

WatchRegistry::Attachment WatchRegistry::attach(NodeIndex parent, NameResolver& resolver,
                                                const char* name) {
  const int watch = inotify_.addWatch(resolver.path(name));
  if (watch < 0) return {.error = -watch};
  const NodeIndex existing = tree_.child(parent, name);
  if (existing != noNode && tree_.watch(existing) == watch) return seen(existing, false);
  if (existing != noNode) {
    // That directory is elsewhere by now, or deleted. Its watches stay until it is known which.
    tree_.detach(existing);
    doubtful_.push_back(tree_.watch(existing));
  }
  const NodeIndex moved = movedNode(parent, resolver, name, watch);
  if (moved == noNode) return seen(tree_.addChild(parent, name, watch), true);
  if (tree_.isAncestor(moved, parent)) {
    // The tree lags behind: the parent itself has a new place that is not known yet.
    doubtful_.push_back(tree_.watch(parent));
    return {.error = ESTALE};
  }
  tree_.move(moved, parent, name);
  return seen(moved, false);
}

WatchRegistry::Attachment WatchRegistry::seen(NodeIndex node, bool isNew) {
  const bool needsListing = isNew || tree_.epoch(node) != epoch_;
  tree_.setEpoch(node, epoch_);
  return {.directory = {node, tree_.watch(node)}, .isNew = isNew, .needsListing = needsListing};
}

/// The node, in the tree of the same stream, of the directory that is now `name` in `parent` and
/// no longer where the node says. A directory that really is in two places is mounted twice.
NodeIndex WatchRegistry::movedNode(NodeIndex parent, NameResolver& resolver, const char* name,
                                   int watch) const {
  const StreamId stream = tree_.stream(parent);
  for (NodeIndex node = tree_.firstOfWatch(watch); node != noNode; node = tree_.nextOfWatch(node)) {
    if (tree_.isRoot(node) || tree_.stream(node) != stream) continue;
    const std::string path = absolutePath(node);
    if (path.empty() || !isSameItem(path.c_str(), resolver.path(name))) return node;
  }
  return noNode;
}

bool WatchRegistry::leadsTo(const char* path, int watch) {
  const int found = inotify_.addWatch(path);
  if (found >= 0 && tree_.firstOfWatch(found) == noNode) unneeded_.push_back(found);
  return found == watch;
}

FileDescriptor WatchRegistry::open(WatchedDirectory directory, NameResolver& resolver, int& error) {
  bool isRoot = false;
  std::string path;
  {
    const std::lock_guard lock(mutex_);
    if (tree_.contains(directory.node, directory.watch)) {
      path = absolutePath(directory.node);
      isRoot = tree_.isRoot(directory.node);
    }
  }
  error = ESTALE;
  if (path.empty()) return {};
  FileDescriptor descriptor(::open(path.c_str(), isRoot ? openFlags : openFlags | O_NOFOLLOW));
  if (!descriptor) {
    error = errno;
    return {};
  }
  resolver.enter(descriptor);
  const std::lock_guard lock(mutex_);
  if (!leadsTo(resolver.path("."), directory.watch) ||
      !tree_.contains(directory.node, directory.watch)) {
    resolver.leave();
    return {};
  }
  error = 0;
  return descriptor;
}

std::vector<WatchRegistry::Location> WatchRegistry::locate(int watch) {
  std::vector<Location> locations;
  const std::lock_guard lock(mutex_);
  for (NodeIndex node = tree_.firstOfWatch(watch); node != noNode; node = tree_.nextOfWatch(node))
    locations.push_back(
        {tree_.stream(node), {node, watch}, absolutePath(node), tree_.isRoot(node)});
  return locations;
}

std::string WatchRegistry::path(WatchedDirectory directory) {
  const std::lock_guard lock(mutex_);
  if (!tree_.contains(directory.node, directory.watch)) return {};
  return absolutePath(directory.node);
}

std::string WatchRegistry::absolutePath(NodeIndex node) const {
  const NodeIndex top = tree_.top(node);
  const auto found = streams_.find(tree_.stream(node));
  if (!tree_.isRoot(top) || found == streams_.end()) return {};
  const auto root = std::find_if(found->second.begin(), found->second.end(),
                                 [&](const Root& each) { return each.node == top; });
  std::string path = tree_.pathBelowTop(node);
  if (root->path != "/") path.insert(0, root->path);
  return path.empty() ? "/" : path;
}

WatchedDirectory WatchRegistry::child(WatchedDirectory parent, std::string_view name) {
  const std::lock_guard lock(mutex_);
  if (!tree_.contains(parent.node, parent.watch)) return {};
  const NodeIndex node = tree_.child(parent.node, name);
  return node == noNode ? WatchedDirectory{} : WatchedDirectory{node, tree_.watch(node)};
}

WatchRegistry::Presence WatchRegistry::presence(WatchedDirectory directory,
                                                NameResolver& resolver) {
  WatchedDirectory parent = directory;
  std::string name = ".";
  {
    const std::lock_guard lock(mutex_);
    if (!tree_.contains(directory.node, directory.watch)) return Presence::gone;
    if (tree_.isDetached(directory.node)) return Presence::gone;
    if (!tree_.isRoot(directory.node)) {
      parent.node = tree_.parent(directory.node);
      parent.watch = tree_.watch(parent.node);
      name = tree_.name(directory.node);
    }
  }
  int error = 0;
  const FileDescriptor opened = open(parent, resolver, error);
  if (!opened) return Presence::unknown;
  const std::lock_guard lock(mutex_);
  const bool present = leadsTo(resolver.path(name.c_str()), directory.watch);
  resolver.leave();
  return present ? Presence::present : Presence::gone;
}

void WatchRegistry::doubt(int watch) {
  const std::lock_guard lock(mutex_);
  doubtful_.push_back(watch);
}

std::vector<int> WatchRegistry::takeDoubtful() {
  const std::lock_guard lock(mutex_);
  return std::exchange(doubtful_, {});
}

void WatchRegistry::remove(WatchedDirectory directory) {
  const std::lock_guard lock(mutex_);
  if (tree_.contains(directory.node, directory.watch)) removeTree(directory.node);
}

void WatchRegistry::watchEnded(int watch) {
  const std::lock_guard lock(mutex_);
  for (NodeIndex node = tree_.firstOfWatch(watch); node != noNode;
       node = tree_.firstOfWatch(watch)) {
    removeTree(node);
  }
}

void WatchRegistry::removeTree(NodeIndex node) {
  if (tree_.isRoot(node)) {
    for (Root& root : streams_[tree_.stream(node)]) {
      if (root.node == node) root.node = noNode;
    }
  }
  tree_.remove(node, unneeded_);
}

void WatchRegistry::beginEpoch() {
  const std::lock_guard lock(mutex_);
  ++epoch_;
}

void WatchRegistry::doubtUnseen(StreamId stream) {
  const std::lock_guard lock(mutex_);
  for (const Root& root : streams_[stream]) {
    if (root.node == noNode) continue;
    for (const NodeIndex node : tree_.subtree(root.node)) {
      if (tree_.epoch(node) != epoch_) doubtful_.push_back(tree_.watch(node));
    }
  }
}

bool WatchRegistry::removeUnneededWatches(std::size_t limit) {
  const std::lock_guard lock(mutex_);
  for (; limit > 0 && !unneeded_.empty(); --limit) {
    const int watch = unneeded_.back();
    unneeded_.pop_back();
    if (tree_.firstOfWatch(watch) == noNode) inotify_.removeWatch(watch);
  }
  return !unneeded_.empty();
}

}  // namespace kestrivane
