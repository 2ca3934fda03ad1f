#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/events/TreeWalker.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

namespace kestrivane {

namespace {

// Adding watches is the kernel's work and waits for one lock there; more threads do not help.
constexpr std::size_t threadCount = 2;
// So many directories are watched before another thread has its turn with the registry.
constexpr std::size_t childrenAtOnce = 32;
constexpr std::size_t namesInStep = 8 * 1024;
constexpr std::size_t longestName = 255;

/// Whether the link count of a directory of this file system tells how many subdirectories it has:
/// two, and one for each.
bool countsSubdirectories(const FileDescriptor& directory) {
  struct statfs system {};
  if (::fstatfs(directory.get(), &system) != 0) return false;
  return system.f_type == EXT4_SUPER_MAGIC || system.f_type == XFS_SUPER_MAGIC ||
         system.f_type == TMPFS_MAGIC;
}

bool isMovedOrDeleted(int error) {
  return error == ENOENT || error == ENOTDIR || error == ELOOP || error == ESTALE;
}

}  // namespace

TreeWalker::TreeWalker(WatchRegistry& registry, OnFinished onFinished)
    : registry_(registry), onFinished_(std::move(onFinished)) {
  for (std::size_t i = 0; i < threadCount; ++i)
    threads_.emplace_back([this] { run(); });
}

TreeWalker::~TreeWalker() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_)
    thread.join();
}

void TreeWalker::startAtRoots(const std::shared_ptr<Walk>& walk, std::size_t rootCount) {
  const std::lock_guard lock(mutex_);
  walk->stepsLeft += rootCount;
  for (std::size_t i = 0; i < rootCount; ++i)
    steps_.push_back({.walk = walk, .rootIndex = i});
  changed_.notify_all();
}

void TreeWalker::startAt(const std::shared_ptr<Walk>& walk, WatchedDirectory directory, Top top) {
  add({.walk = walk, .directory = directory, .top = top});
}

void TreeWalker::add(Step step) {
  const std::lock_guard lock(mutex_);
  ++step.walk->stepsLeft;
  steps_.push_back(std::move(step));
  changed_.notify_one();
}

void TreeWalker::run() {
  Worker worker;
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return ending_ || !steps_.empty(); });
    if (ending_) return;
    Step step = std::move(steps_.back());
    steps_.pop_back();
    lock.unlock();
    perform(step, worker);
    lock.lock();
    if (--step.walk->stepsLeft > 0) continue;
    lock.unlock();
    onFinished_(std::move(step.walk));
    lock.lock();
  }
}

void TreeWalker::perform(Step& step, Worker& worker) {
  const FileDescriptor descriptor = openTop(step, worker);
  if (!descriptor) return;
  if (step.names.empty()) list(step, descriptor, worker);
  watchChildren(step, descriptor, worker);
  worker.resolver.leave();
}

FileDescriptor TreeWalker::openTop(Step& step, Worker& worker) {
  FileDescriptor descriptor;
  int error = 0;
  if (step.directory.node == noNode) {
    const WatchRegistry::Attachment root =
        registry_.attachRoot(step.walk->stream, step.rootIndex, worker.resolver, descriptor);
    step.directory = root.directory;
    error = root.error;
    if (error != 0 || !root.needsListing) {
      worker.resolver.leave();
      descriptor.reset();
    }
  } else {
    descriptor = registry_.open(step.directory, worker.resolver, error);
    // It will be listed where it is, once that is known.
    if (isMovedOrDeleted(error)) registry_.doubt(step.directory.watch);
  }
  if (error != 0) noteFailure(step, "", error);
  return descriptor;
}

void TreeWalker::list(Step& step, const FileDescriptor& descriptor, Worker& worker) {
  std::vector<Walk::Item> found;
  const bool reports = step.walk->reports == Walk::Reports::whatIsFound && step.top == Top::isNew;
  const std::string path = reports ? registry_.path(step.directory) : std::string();
  worker.listing.forEach(descriptor, [&](const char* name, bool isDirectory) {
    const std::size_t length = std::strlen(name);
    if (reports && !path.empty()) found.push_back({childPath(path, name), isDirectory});
    if (!isDirectory || length > longestName) return;
    if (step.names.size() > namesInStep) {
      add(step);
      step.names.clear();
    }
    step.names.append(name, length + 1);
  });
  if (found.empty()) return;
  const std::lock_guard lock(mutex_);
  std::move(found.begin(), found.end(), std::back_inserter(step.walk->found));
}

void TreeWalker::watchChildren(const Step& step, const FileDescriptor& descriptor, Worker& worker) {
  const bool leavesShow =
      step.walk->reports == Walk::Reports::nothing && countsSubdirectories(descriptor);
  struct stat parent {};
  if (::fstat(descriptor.get(), &parent) != 0) return;

  const char* next = step.names.data();
  const char* const end = next + step.names.size();
  while (next != end) {
    std::array<const char*, childrenAtOnce> names{};
    std::size_t count = 0;
    for (; next != end && count < names.size(); next += std::strlen(next) + 1) {
      // Fetches what the registry will look up under its lock: the disk may be slow.
      struct stat child {};
      if (::fstatat(descriptor.get(), next, &child, AT_SYMLINK_NOFOLLOW) == 0)
        names[count++] = next;
    }
    const auto children =
        registry_.attachChildren(step.directory, worker.resolver, {names.data(), count});
    for (std::size_t i = 0; i < children.size(); ++i) {
      if (children[i].error != 0) noteFailure(step, names[i], children[i].error);
      if (!children[i].needsListing) continue;
      struct stat child {};
      const bool isLeaf = leavesShow &&
                          ::fstatat(descriptor.get(), names[i], &child, AT_SYMLINK_NOFOLLOW) == 0 &&
                          child.st_dev == parent.st_dev && child.st_nlink == 2;
      if (!isLeaf) enterChild(step, descriptor, names[i], children[i], worker);
    }
    if (children.size() < count) return registry_.doubt(step.directory.watch);
  }
}

/// Lists a child that has just been watched. If another directory has taken its name since, the
/// kernel reports its move, which has it listed again.
void TreeWalker::enterChild(const Step& step, const FileDescriptor& parent, const char* name,
                            const WatchRegistry::Attachment& child, Worker& worker) {
  const FileDescriptor descriptor(
      ::openat(parent.get(), name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
  if (!descriptor) return noteFailure(step, name, errno);
  if (step.walk->reports == Walk::Reports::whatIsFound && step.top == Top::isKnown && child.isNew) {
    Walk::Item item{registry_.path(child.directory), true};
    const std::lock_guard lock(mutex_);
    step.walk->found.push_back(std::move(item));
  }
  Step below{.walk = step.walk,
             .directory = child.directory,
             .top = child.isNew ? Top::isNew : Top::isKnown};
  list(below, descriptor, worker);
  if (!below.names.empty()) add(std::move(below));
}

void TreeWalker::noteFailure(const Step& step, const char* name, int error) {
  const bool isStreamsFolder = step.directory.node == noNode;
  if (!isStreamsFolder && isMovedOrDeleted(error)) return;
  std::string path = registry_.path(step.directory);
  if (*name != '\0') path = childPath(path, name);
  const std::lock_guard lock(mutex_);
  step.walk->limitReached |= error == ENOSPC;
  if (isStreamsFolder || error != ENOSPC)
    step.walk->failures.push_back({std::move(path), step.rootIndex, error});
}

}  // namespace kestrivane
